// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/SystemClock.h"

#include <QTimer>

#include <algorithm>
#include <limits>
#include <utility>

#include "agent/core/MonotonicTime.h"

namespace agent {

namespace {

// QTimer counts in int, about 25 days.
constexpr qint64 longestTimerMs = std::numeric_limits<int>::max();

} // namespace

SystemClock::SystemClock() : m_startMs(monotonicMs()) {}

qint64 SystemClock::elapsedMs() const
{
    return monotonicMs() - m_startMs;
}

QDateTime SystemClock::nowUtc() const
{
    return QDateTime::currentDateTimeUtc();
}

void SystemClock::wait(qint64 delayMs, QObject* context, std::function<void()> call)
{
    const auto timerMs = static_cast<int>(std::min(delayMs, longestTimerMs));
    QTimer::singleShot(timerMs, Qt::PreciseTimer, context, std::move(call));
}

} // namespace agent
