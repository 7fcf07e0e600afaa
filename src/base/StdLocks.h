// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_STDLOCKS_H
#define VIGIL_BASE_STDLOCKS_H

#include <chrono>
#include <condition_variable>
#include <mutex>

// QMutex and QSemaphore, as far as the library uses them, on the standard library's locks. Only for builds
// with the thread sanitizer: it cannot see Qt's locks, since Qt itself is not instrumented.
//
// All limits use the system clock. The sanitizer does not know the calls that wait on the steady clock.

namespace base {

class StdMutex
{
public:
    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }

    bool tryLock(int timeoutMs = 0)
    {
        if (timeoutMs >= 0)
            return m_mutex.try_lock_until(std::chrono::system_clock::now() +
                                          std::chrono::milliseconds(timeoutMs));
        m_mutex.lock();
        return true;
    }

private:
    std::timed_mutex m_mutex;
};

class StdSemaphore
{
public:
    void release()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_available;
        m_released.notify_all();
    }

    bool tryAcquire(int count, int timeoutMs)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const auto limit = std::chrono::system_clock::now() + std::chrono::milliseconds(timeoutMs);
        if (!m_released.wait_until(lock, limit, [&] { return m_available >= count; }))
            return false;
        m_available -= count;
        return true;
    }

    int available() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_available;
    }

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_released;
    int m_available = 0;
};

/// Qt runs a queued call after its posting, but the sanitizer cannot see the queue's lock. This one stands in
/// for it: the poster holds it, the receiver calls followPosting() before it looks at the call.
class PostingLock
{
public:
    PostingLock() : m_lock(mutex()) {}

    static void followPosting() { const PostingLock lock; }

private:
    static std::mutex& mutex()
    {
        static std::mutex queueMutex;
        return queueMutex;
    }

    const std::lock_guard<std::mutex> m_lock;
};

} // namespace base

#endif
