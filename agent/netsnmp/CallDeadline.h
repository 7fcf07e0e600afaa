// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_CALLDEADLINE_H
#define VIGIL_AGENT_NETSNMP_CALLDEADLINE_H

#include <chrono>

namespace agent {

/// Interrupts system calls that have not come back when the time is up, for as long as the object lives.
///
/// Purpose: a library that connects to a peer which does not accept would wait for minutes or for ever. The
/// interrupted call fails with EINTR.
///
/// Threads: a process with one thread; one object at a time, since it takes SIGALRM. Failure: none.
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
