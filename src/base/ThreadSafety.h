// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_THREADSAFETY_H
#define VIGIL_BASE_THREADSAFETY_H

// The library's locks, and annotations for clang's thread-safety analysis. Other compilers ignore them.

#include <mutex>

#include "platform/Platform.h"

#if defined(VIGIL_STD_MUTEX)
#include "base/StdLocks.h"
#else
#include <QMutex>
#include <QSemaphore>
#endif

#if defined(__clang__)
#define VIGIL_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VIGIL_THREAD_ANNOTATION(x)
#endif

#define VIGIL_GUARDED_BY(mutex) VIGIL_THREAD_ANNOTATION(guarded_by(mutex))
#define VIGIL_REQUIRES(mutex) VIGIL_THREAD_ANNOTATION(requires_capability(mutex))
#define VIGIL_EXCLUDES(mutex) VIGIL_THREAD_ANNOTATION(locks_excluded(mutex))
#define VIGIL_NO_THREAD_SAFETY_ANALYSIS VIGIL_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace base {

#if defined(VIGIL_STD_MUTEX)
using PlainMutex = StdMutex;
using Semaphore = StdSemaphore;
#else
using PlainMutex = QMutex;
using Semaphore = QSemaphore;

/// Held while a call is put into another thread's event queue. Does nothing: Qt's queue has a lock of its
/// own.
class PostingLock
{
public:
    PostingLock() {} // not defaulted: a variable of this type must not count as unused

    /// The receiver of such a call begins with this.
    static void followPosting() {}
};
#endif

/// A mutex with annotations. Not recursive. A forked child takes no locks: their holders are gone.
class VIGIL_THREAD_ANNOTATION(capability("mutex")) Mutex
{
public:
    void lock() VIGIL_THREAD_ANNOTATION(acquire_capability())
    {
        if (!platform::isForkedChild())
            m_mutex.lock();
    }

    /// False if the lock is not free within timeoutMs milliseconds. Negative means no limit.
    bool tryLock(int timeoutMs = 0) VIGIL_THREAD_ANNOTATION(try_acquire_capability(true))
    {
        return platform::isForkedChild() || m_mutex.tryLock(timeoutMs);
    }

    void unlock() VIGIL_THREAD_ANNOTATION(release_capability())
    {
        if (!platform::isForkedChild())
            m_mutex.unlock();
    }

private:
    PlainMutex m_mutex;
};

/// The same for holders that call themselves.
class RecursiveMutex
{
public:
    void lock()
    {
        if (!platform::isForkedChild())
            m_mutex.lock();
    }

    void unlock()
    {
        if (!platform::isForkedChild())
            m_mutex.unlock();
    }

private:
    std::recursive_mutex m_mutex;
};

/// Holds a Mutex for the length of a scope.
class VIGIL_THREAD_ANNOTATION(scoped_lockable) MutexLock
{
public:
    explicit MutexLock(Mutex& mutex) VIGIL_THREAD_ANNOTATION(acquire_capability(mutex)) : m_mutex(mutex)
    {
        m_mutex.lock();
    }
    ~MutexLock() VIGIL_THREAD_ANNOTATION(release_capability()) { m_mutex.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& m_mutex;
};

} // namespace base

#endif
