// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_BACKGROUNDWRITER_H
#define VIGIL_AGENT_CORE_BACKGROUNDWRITER_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace agent {

/// Writes in a thread of its own, in order, where the system cannot tell whether a write would wait.
///
/// Threads: any.
/// Ownership: one object, for the life of the process. A thread that is still writing at the end is left to
/// the system.
/// Failure: beyond 64 KiB nothing is taken.
class BackgroundWriter
{
public:
    BackgroundWriter();

    /// False if too much is pending.
    bool add(int bytes, std::function<void()> write);

    /// Waits for all writes, for half a second at most. For the end of the process.
    void waitUntilWritten();

private:
    struct Write
    {
        int bytes;
        std::function<void()> run;
    };

    void run();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Write> m_writes; // the first one is running
    int m_bytes = 0;            // of all writes
};

} // namespace agent

#endif
