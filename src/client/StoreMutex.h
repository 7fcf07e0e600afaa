// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_STOREMUTEX_H
#define VIGIL_CLIENT_STOREMUTEX_H

#include <atomic>
#include <thread>

#include "base/ThreadSafety.h"

/// The lock of the callback store. Not recursive, but it knows its holder: callbacks run under this lock, and
/// operations that need it must be refused inside a callback.
class StoreMutex
{
public:
    void lock()
    {
        m_mutex.lock();
        m_holder = std::this_thread::get_id();
    }

    /// False if the lock is not free within timeoutMs milliseconds; negative means no limit.
    bool tryLock(int timeoutMs)
    {
        if (!m_mutex.tryLock(timeoutMs))
            return false;
        m_holder = std::this_thread::get_id();
        return true;
    }

    void unlock()
    {
        m_holder = std::thread::id();
        m_mutex.unlock();
    }

    bool isHeldByThisThread() const { return m_holder == std::this_thread::get_id(); }

private:
    base::PlainMutex m_mutex;
    std::atomic<std::thread::id> m_holder{};
};

#endif
