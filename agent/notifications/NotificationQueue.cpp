// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/NotificationQueue.h"

#include <algorithm>
#include <utility>

#include "agent/checks/Severity.h"
#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 bytesPerMs = 2'000;
constexpr qint64 maxCredit = 1000 * bytesPerMs;
constexpr size_t waitingSize = 6'000; // nodes and copies of the identifier of a waiting change, at most
constexpr int mostCriticalInRow = 9;  // then one of the others: a flood must not hold recoveries back
constexpr qint64 turnMs = 50;
constexpr qint64 readyAgainMs = 500;
constexpr qint64 warningDelayMs = 1'000; // the warning counts the drops meanwhile
constexpr qint64 warningPauseMs = 60'000;

} // namespace

NotificationQueue::NotificationQueue(Clock& clock, size_t maxMemory, Send send)
    : m_clock(clock),
      m_maxMemory(maxMemory),
      m_send(std::move(send)),
      m_credit(maxCredit),
      m_creditedMs(clock.elapsedMs())
{}

void NotificationQueue::sendInTurn(HealthChange change, ApplicationId application)
{
    if (m_waiting.empty() && canSend())
        return send(Notification::ofHealth(change));
    const auto before = m_waiting.find(change.check);
    if (before != m_waiting.end()) {
        change.previousStatus = take(before).previousStatus;
        if (change.status == change.previousStatus && !change.isForgotten)
            return;
    }
    add(std::move(change), application);
    while (m_waitingSize > m_maxMemory)
        makeRoom();
    drainLater();
}

void NotificationQueue::sendNowOrDrop(const Notification& notification)
{
    if (!m_isReady())
        ++m_dropped; // the log already says that snmpd is away
    else if (m_waiting.empty() && hasCredit())
        send(notification);
    else
        drop();
}

// --- Waiting changes

NotificationQueue::Order& NotificationQueue::orderOf(const Waiting& waiting)
{
    Turn& turn = m_turns[waiting.application];
    return waiting.change.status == status::critical ? turn.critical : turn.others;
}

void NotificationQueue::add(HealthChange change, ApplicationId application)
{
    const ObjectId check = change.check;
    change.summary = Notification::cut(std::move(change.summary)); // only this much is sent
    change.summary.shrink_to_fit();
    const size_t size = waitingSize + change.summary.size();
    Waiting& waiting = m_waiting[check] = {std::move(change), application, size, {}};
    Order& order = orderOf(waiting);
    waiting.place = order.insert(order.end(), check);
    m_turns[application].size += size;
    m_waitingSize += size;
}

HealthChange NotificationQueue::take(std::map<ObjectId, Waiting>::iterator entry)
{
    Waiting& waiting = entry->second;
    orderOf(waiting).erase(waiting.place);
    const auto turn = m_turns.find(waiting.application);
    turn->second.size -= waiting.size;
    if (turn->second.size == 0)
        m_turns.erase(turn);
    m_waitingSize -= waiting.size;
    HealthChange change = std::move(waiting.change);
    m_waiting.erase(entry);
    return change;
}

/// The application with the most loses its newest change, one that is not CRITICAL if possible.
void NotificationQueue::makeRoom()
{
    const auto largest = std::max_element(m_turns.begin(), m_turns.end(), [](const auto& a, const auto& b) {
        return a.second.size < b.second.size;
    });
    const Turn& turn = largest->second;
    take(m_waiting.find(turn.others.empty() ? turn.critical.back() : turn.others.back()));
    drop();
}

HealthChange NotificationQueue::takeNext()
{
    const bool isOthersTurn = m_criticalInRow == mostCriticalInRow;
    ObjectId check = nextOf(isOthersTurn ? m_others : m_critical);
    if (check.empty())
        check = nextOf(isOthersTurn ? m_critical : m_others);
    const auto entry = m_waiting.find(check);
    const bool isCritical = entry->second.change.status == status::critical;
    m_criticalInRow = isCritical ? std::min(m_criticalInRow + 1, mostCriticalInRow) : 0;
    (isCritical ? m_critical : m_others).lastTurn = entry->second.application;
    return take(entry);
}

/// The first check of the application whose turn it is; empty if there is none.
ObjectId NotificationQueue::nextOf(const Line& line) const
{
    const auto hasSome = [&line](const auto& turn) { return !(turn.second.*line.order).empty(); };
    const auto after = m_turns.upper_bound(line.lastTurn);
    auto next = std::find_if(after, m_turns.end(), hasSome);
    if (next == m_turns.end()) {
        next = std::find_if(m_turns.begin(), after, hasSome);
        if (next == after)
            return {};
    }
    return (next->second.*line.order).front();
}

void NotificationQueue::correct(std::map<ObjectId, int>& notified) const
{
    for (const auto& [check, waiting] : m_waiting)
        notified[check] = waiting.change.previousStatus;
}

// --- Sending

bool NotificationQueue::canSend()
{
    return m_isReady() && hasCredit();
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
    if (std::exchange(m_isDraining, true))
        return;
    m_clock.callAfter(m_isReady() ? turnMs : readyAgainMs, this, [this] { drain(); });
}

void NotificationQueue::drain()
{
    m_isDraining = false;
    while (!m_waiting.empty() && canSend())
        send(Notification::ofHealth(takeNext()));
    if (!m_waiting.empty())
        drainLater();
}

} // namespace agent
