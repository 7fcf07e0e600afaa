// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/SystemClock.h"

#include <QTimer>

#include <algorithm>
#include <limits>

namespace agent {

namespace {

// QTimer counts in int, which 25 days overflow.
constexpr qint64 longestTimerMs = std::numeric_limits<int>::max();

} // namespace

SystemClock::SystemClock()
{
    m_sinceStart.start();
}

qint64 SystemClock::elapsedMs() const
{
    return m_sinceStart.elapsed();
}

QDateTime SystemClock::nowUtc() const
{
    return QDateTime::currentDateTimeUtc();
}

void SystemClock::callAfter(qint64 delayMs, QObject* context, std::function<void()> call)
{
    const qint64 delay = std::clamp(delayMs, qint64(0), longestTimerMs);
    const qint64 rest = delayMs - delay;
    QTimer::singleShot(static_cast<int>(delay), Qt::PreciseTimer, context,
                       [this, rest, context, call = std::move(call)] {
                           if (rest > 0)
                               callAfter(rest, context, call);
                           else
                               call();
                       });
}

} // namespace agent
