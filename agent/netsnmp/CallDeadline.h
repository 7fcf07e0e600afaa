// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_CALLDEADLINE_H
#define VIGIL_AGENT_NETSNMP_CALLDEADLINE_H

#include <chrono>

namespace agent {

/// Interrupts blocking system calls once the time is up, for as long as the object lives. They then fail with
/// EINTR. Without it, a library could take minutes to connect to a peer that does not accept.
///
/// One source file for each system; the one for POSIX takes SIGALRM.
///
/// Threads: a process with a single thread. One object at a time.
class CallDeadline
{
public:
    explicit CallDeadline(std::chrono::milliseconds time);
    ~CallDeadline();
    CallDeadline(const CallDeadline&) = delete;
    CallDeadline& operator=(const CallDeadline&) = delete;
};

} // namespace agent

#endif
