// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/Timer.h"

#include <utility>

namespace agent {

Timer::Timer(Clock& clock, std::function<void()> call) : m_clock(clock), m_call(std::move(call)) {}

void Timer::startOnce(qint64 delayMs)
{
    wait(delayMs, false);
}

void Timer::startRepeating(qint64 intervalMs)
{
    wait(intervalMs, true);
}

void Timer::stop()
{
    m_pending.reset();
}

void Timer::wait(qint64 delayMs, bool isRepeating)
{
    m_pending = std::make_unique<QObject>();
    m_clock.callAfter(delayMs, m_pending.get(), [this, delayMs, isRepeating] {
        m_pending.reset();
        if (isRepeating)
            wait(delayMs, true);
        const std::function<void()> call = m_call; // the call may destroy this timer
        call();
    });
}

} // namespace agent
