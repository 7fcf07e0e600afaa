// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_UPDATECLOCK_H
#define VIGIL_HOST_HEALTH_UPDATECLOCK_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

/// Tells the main loop when to update next: at its interval, or at once when somebody asks for it.
///
/// The library calls handlers on its client thread, which must not be kept; they hand their wish over here.
/// requestNow() may be called from any thread, wait() from one.
class UpdateClock
{
public:
    enum class Wake { Interval, Request, Stop };

    UpdateClock(std::chrono::milliseconds interval, std::function<bool()> isStopWanted);

    void requestNow();

    /// Requests made since the last call are one; none is lost.
    Wake wait();

private:
    const std::chrono::milliseconds m_interval;
    const std::function<bool()> m_isStopWanted; // cannot wake anybody, so it is asked now and then
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isRequested = false;
};

#endif
