// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/LiveChecks.h"

#include <atomic>
#include <utility>

#include "base/NeverDestroyed.h"
#include "base/ThreadSafety.h"
#include "client/CallbackStoreLock.h"
#include "client/VigilSnmp.h"
#include "platform/Platform.h"

using vigil::VigilSnmp;

namespace {

std::atomic<unsigned int> count{0};
bool isStarted = false; // guarded by startStopMutex(). A callback may add a check while the library stops

/// Statics of the application may still release checks at the end of the process.
base::Mutex& startStopMutex()
{
    static const base::NeverDestroyed<base::Mutex> mutex;
    return mutex.get();
}

/// True if a check changes the count alone: the library is out of use, or the thread is inside a callback,
/// where the library runs and a thread that stops it waits for the callback.
bool onlyCounts()
{
    return VigilSnmp::instance().isOutOfUse() || CallbackStoreLock::isHeldByThisThread();
}

} // namespace

void LiveChecks::add()
{
    if (onlyCounts()) {
        ++count;
        return;
    }
    const platform::ForkWatch watch; // before the lock, which a child would inherit
    const base::MutexLock lock(startStopMutex());
    ++count;
    if (!std::exchange(isStarted, true))
        VigilSnmp::instance().init("vigilsnmpif");
}

void LiveChecks::remove()
{
    if (onlyCounts()) {
        --count;
        return;
    }
    const platform::ForkWatch watch; // before the lock, which a child would inherit
    const base::MutexLock lock(startStopMutex());
    if (--count == 0) {
        VigilSnmp::instance().cleanup();
        isStarted = false;
    }
}
