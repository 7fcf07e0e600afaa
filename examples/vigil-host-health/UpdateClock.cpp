// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "UpdateClock.h"

#include <algorithm>
#include <utility>

using Clock = std::chrono::steady_clock;

namespace {
constexpr std::chrono::milliseconds stopPoll(100);
}

UpdateClock::UpdateClock(std::chrono::milliseconds interval, std::function<bool()> isStopWanted)
    : m_interval(interval), m_isStopWanted(std::move(isStopWanted))
{}

void UpdateClock::requestNow()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isRequested = true;
    }
    m_changed.notify_one();
}

UpdateClock::Wake UpdateClock::wait()
{
    const Clock::time_point end = Clock::now() + m_interval;
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_isRequested && !m_isStopWanted() && Clock::now() < end)
        m_changed.wait_until(lock, (std::min)(end, Clock::now() + stopPoll));
    if (m_isStopWanted())
        return Wake::Stop;
    return std::exchange(m_isRequested, false) ? Wake::Request : Wake::Interval;
}
