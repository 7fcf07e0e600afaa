// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// This program lives in the past by the clock of the system, as if the administrator had just set it forward
// between two looks at it. Limits must not depend on it.

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

// NOLINTNEXTLINE(readability-identifier-naming): the system's function
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    struct timespec* time) noexcept
{
    constexpr time_t hour = 3600;
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && clock == CLOCK_REALTIME)
        time->tv_sec -= hour;
    return static_cast<int>(result);
}
