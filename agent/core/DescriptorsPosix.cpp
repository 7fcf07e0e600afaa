// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/Descriptors.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace agent::descriptors {

namespace {

constexpr rlim_t reserved = 32;

} // namespace

void openStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0)
            open("/dev/null", O_RDWR); // gets the lowest free number, which is this one
    }
}

bool require(int count)
{
    const rlim_t needed = static_cast<rlim_t>(count) + 2 * reserved; // some are open already
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return true;
    if (limit.rlim_cur >= needed)
        return true;
    limit.rlim_cur = std::min(needed, limit.rlim_max);
    return setrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur == needed;
}

bool isReserved(int descriptor)
{
    // The system gives out the lowest free number, so a high one shows how many are in use.
    rlimit limit = {};
    return getrlimit(RLIMIT_NOFILE, &limit) == 0 &&
           static_cast<rlim_t>(descriptor) + reserved >= limit.rlim_cur;
}

} // namespace agent::descriptors
