// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/FaultySystem.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <iterator>

namespace {

struct Function
{
    const char* name;
    int error; // the usual one of a system or a disk without room
};

// Not pipe(): the undefined-behaviour sanitizer tests memory with it.
constexpr Function functions[] = {
    {"connect", ECONNREFUSED}, {"eventfd", EMFILE},        {"flock", ENOLCK},    {"fstat", EIO},
    {"ftruncate", EIO},        {"mkdir", EACCES},          {"open", EMFILE},     {"pipe2", EMFILE},
    {"poll", ENOMEM},          {"pthread_create", EAGAIN}, {"send", ECONNRESET}, {"setsockopt", ENOBUFS},
    {"socket", EMFILE},        {"write", ENOSPC},
};

std::atomic<const Function*> planned{nullptr};
std::atomic<bool> plannedDescriptors{false};
std::atomic<int> calls{0};
std::atomic<int> firstFailure{0};
std::atomic<int> lastFailure{0};

const Function* find(const std::string& name)
{
    const auto found = std::find_if(std::begin(functions), std::end(functions),
                                    [&](const Function& each) { return name == each.name; });
    return found == std::end(functions) ? nullptr : found;
}

/// The error of this call, or 0.
int faultOf(const std::string& name)
{
    const Function* function = find(name);
    const bool isPlanned = planned == function || (plannedDescriptors && function->error == EMFILE);
    if (!isPlanned)
        return 0;
    const int call = ++calls;
    return call >= firstFailure && call <= lastFailure ? function->error : 0;
}

int failed(int error)
{
    errno = error;
    return -1;
}

template <typename Signature>
Signature* next(const char* name)
{
    return reinterpret_cast<Signature*>(dlsym(RTLD_NEXT, name));
}

} // namespace

bool faults::plan(const std::string& function, int first, int count)
{
    calls = 0;
    firstFailure = first;
    lastFailure = count == faults::all ? INT_MAX : first + count - 1;
    plannedDescriptors = function == "descriptors";
    planned = find(function);
    return planned || plannedDescriptors;
}

int faults::end()
{
    planned = nullptr;
    plannedDescriptors = false;
    return calls;
}

// NOLINTBEGIN(readability-identifier-naming, bugprone-reserved-identifier): the system's functions
#define FAULTY_CALL(name, signature, ...)                                                                    \
    static auto* const real = next<signature>(#name);                                                        \
    const int error = faultOf(#name);                                                                        \
    return error ? failed(error) : real(__VA_ARGS__)

#define FAULTY extern "C" __attribute__((visibility("default")))

FAULTY int connect(int socket, const sockaddr* address, socklen_t size)
{
    FAULTY_CALL(connect, int(int, const sockaddr*, socklen_t), socket, address, size);
}

FAULTY int eventfd(unsigned int value, int flags) noexcept
{
    FAULTY_CALL(eventfd, int(unsigned int, int), value, flags);
}

FAULTY int flock(int file, int operation) noexcept
{
    FAULTY_CALL(flock, int(int, int), file, operation);
}

FAULTY int fstat(int file, struct stat* info) noexcept
{
    FAULTY_CALL(fstat, int(int, struct stat*), file, info);
}

FAULTY int ftruncate(int file, off_t size) noexcept
{
    FAULTY_CALL(ftruncate, int(int, off_t), file, size);
}

FAULTY int mkdir(const char* path, mode_t mode) noexcept
{
    FAULTY_CALL(mkdir, int(const char*, mode_t), path, mode);
}

FAULTY int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    FAULTY_CALL(open, int(const char*, int, ...), path, flags, mode);
}

FAULTY int pipe2(int* files, int flags) noexcept
{
    FAULTY_CALL(pipe2, int(int*, int), files, flags);
}

FAULTY int poll(pollfd* entries, nfds_t count, int timeoutMs)
{
    FAULTY_CALL(poll, int(pollfd*, nfds_t, int), entries, count, timeoutMs);
}

/// Returns its error.
FAULTY int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*routine)(void*),
                          void* argument) noexcept
{
    using Signature = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static auto* const real = next<Signature>("pthread_create");
    const int error = faultOf("pthread_create");
    return error ? error : real(thread, attributes, routine, argument);
}

FAULTY ssize_t send(int socket, const void* bytes, size_t size, int flags)
{
    FAULTY_CALL(send, ssize_t(int, const void*, size_t, int), socket, bytes, size, flags);
}

FAULTY int setsockopt(int socket, int level, int option, const void* value, socklen_t size) noexcept
{
    FAULTY_CALL(setsockopt, int(int, int, int, const void*, socklen_t), socket, level, option, value, size);
}

FAULTY int socket(int domain, int type, int protocol) noexcept
{
    FAULTY_CALL(socket, int(int, int, int), domain, type, protocol);
}

FAULTY ssize_t write(int file, const void* bytes, size_t size)
{
    FAULTY_CALL(write, ssize_t(int, const void*, size_t), file, bytes, size);
}
// NOLINTEND(readability-identifier-naming, bugprone-reserved-identifier)
