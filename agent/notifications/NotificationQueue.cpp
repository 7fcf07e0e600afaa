// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/NotificationQueue.h"

#include <algorithm>
#include <utility>

#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 bytesPerMs = 2'000;
constexpr qint64 maxCredit = 1000 * bytesPerMs;
constexpr size_t maxWaitingSize = 60'000'000;
constexpr qint64 turnMs = 50;
constexpr qint64 warningDelayMs = 1'000; // the warning counts the drops meanwhile
constexpr qint64 warningPauseMs = 60'000;

} // namespace

NotificationQueue::NotificationQueue(Clock& clock, Send send)
    : m_clock(clock), m_send(std::move(send)), m_credit(maxCredit), m_creditedMs(clock.elapsedMs())
{}

void NotificationQueue::sendInTurn(Notification notification)
{
    if (m_waiting.empty() && hasCredit())
        return send(notification);
    if (m_waitingSize + notification.size() > maxWaitingSize)
        return drop();
    m_waitingSize += notification.size();
    m_waiting.push_back(std::move(notification));
    if (m_waiting.size() == 1)
        drainLater();
}

void NotificationQueue::sendNowOrDrop(const Notification& notification)
{
    if (m_waiting.empty() && hasCredit())
        send(notification);
    else
        drop();
}

bool NotificationQueue::hasCredit()
{
    const qint64 now = m_clock.elapsedMs();
    const qint64 earned = (now - std::exchange(m_creditedMs, now)) * bytesPerMs;
    m_credit = std::min(m_credit + earned, maxCredit);
    return m_credit > 0;
}

void NotificationQueue::send(const Notification& notification)
{
    m_credit -= static_cast<qint64>(notification.size());
    m_send(notification);
}

void NotificationQueue::drop()
{
    ++m_dropped;
    if (m_droppedSinceWarning++ > 0)
        return;
    const qint64 delay = std::max(m_nextWarningMs - m_clock.elapsedMs(), warningDelayMs);
    m_clock.callAfter(delay, this, [this] { warnOfDropped(); });
}

void NotificationQueue::warnOfDropped()
{
    log::warning(QStringLiteral("too many notifications at once, dropped: %1. Find out which application "
                                "publishes so many changes or values with notifications")
                     .arg(std::exchange(m_droppedSinceWarning, 0)));
    m_nextWarningMs = m_clock.elapsedMs() + warningPauseMs;
}

void NotificationQueue::drainLater()
{
    m_clock.callAfter(turnMs, this, [this] { drain(); });
}

void NotificationQueue::drain()
{
    while (!m_waiting.empty() && hasCredit()) {
        const Notification next = std::move(m_waiting.front());
        m_waiting.pop_front();
        m_waitingSize -= next.size();
        send(next);
    }
    if (!m_waiting.empty())
        drainLater();
}

} // namespace agent
