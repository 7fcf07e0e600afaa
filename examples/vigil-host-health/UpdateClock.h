// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_UPDATECLOCK_H
#define VIGIL_HOST_HEALTH_UPDATECLOCK_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

/// The pace of the main loop: an update at each interval, and at once on request.
///
/// The library calls handlers on its client thread, and they must return quickly; requestNow() lets them ask
/// for an update. Any thread may call requestNow(), one thread wait().
class UpdateClock
{
public:
    enum class Wake { Interval, Request, Stop };

    UpdateClock(std::chrono::milliseconds interval, std::function<bool()> isStopWanted);

    void requestNow();

    /// Blocks until the next update is due. Requests since the last call count as one.
    Wake wait();

private:
    const std::chrono::milliseconds m_interval;
    const std::function<bool()> m_isStopWanted; // polled, because a signal handler cannot wake wait()
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isRequested = false;
};

#endif
