// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/NotificationPolicy.h"

#include <algorithm>
#include <utility>

namespace agent {

namespace {

constexpr qint64 summaryWaitMs = 200;
constexpr qint64 quietMs = 1000;

bool needsAttention(int status)
{
    constexpr int warning = 1;
    constexpr int critical = 2;
    return status == warning || status == critical;
}

} // namespace

NotificationPolicy::NotificationPolicy(Clock& clock, LookUp served, Notify notify)
    : m_clock(clock), m_served(std::move(served)), m_notify(std::move(notify))
{}

void NotificationPolicy::handleStatusWritten(const ObjectId& id, int status)
{
    Check& check = m_checks[id];
    if (status != healthTable::unknownStatus)
        check.isEvaluated = true;
    const qint64 now = m_clock.elapsedMs();
    // A status that changes again while it waits waits no longer for that: summaries may never come.
    const bool isWaiting = now < check.summaryDueMs;
    if (std::exchange(check.written, status) != status && !isWaiting)
        check.summaryDueMs = now + summaryWaitMs;
    consider(id, check);
}

void NotificationPolicy::handleSummaryWritten(const ObjectId& id, const std::string& summary)
{
    Check& check = m_checks[id];
    if (!summary.empty())
        check.isEvaluated = true;
    check.summaryDueMs = 0;
    consider(id, check);
}

void NotificationPolicy::handleCovered(const ObjectId& id)
{
    Check& check = m_checks[id];
    check.written = healthTable::unknownStatus;
    check.summaryDueMs = 0;
    consider(id, check);
}

void NotificationPolicy::handleRemoved(const ObjectId& id)
{
    const auto position = m_checks.find(id);
    if (position == m_checks.end())
        return;
    Check& check = position->second;
    Check remainder;
    remainder.quietUntilMs = check.quietUntilMs;
    remainder.wakeUpMs = check.wakeUpMs;
    check = remainder;
    if (m_clock.elapsedMs() < check.quietUntilMs)
        wakeUpAt(check.quietUntilMs, id, check);
    else if (!check.wakeUpMs)
        m_checks.erase(position);
}

void NotificationPolicy::consider(const ObjectId& id, Check& check)
{
    if (!check.isEvaluated)
        return;
    const std::optional<Served> served = m_served(id);
    if (!served)
        return;
    const qint64 now = m_clock.elapsedMs();
    if (now < check.summaryDueMs)
        return wakeUpAt(check.summaryDueMs, id, check);
    if (!isNews(check, served->status))
        return;
    if (now < check.quietUntilMs)
        return wakeUpAt(check.quietUntilMs, id, check);
    const int previous = std::exchange(check.notified, served->status);
    check.quietUntilMs = now + quietMs;
    m_notify({id, served->status, previous, served->summary});
}

bool NotificationPolicy::isNews(Check& check, int status) const
{
    const bool isFirst = !std::exchange(check.isKnown, true);
    if (isFirst && !needsAttention(status))
        check.notified = status;
    return status != check.notified;
}

void NotificationPolicy::wakeUpAt(qint64 timeMs, const ObjectId& id, Check& check)
{
    if (check.wakeUpMs && *check.wakeUpMs <= timeMs)
        return;
    check.wakeUpMs = timeMs;
    m_clock.callAfter(timeMs - m_clock.elapsedMs(), this, [this, id] { wakeUp(id); });
}

void NotificationPolicy::wakeUp(const ObjectId& id)
{
    const auto position = m_checks.find(id);
    if (position == m_checks.end())
        return;
    Check& check = position->second;
    if (check.wakeUpMs && *check.wakeUpMs <= m_clock.elapsedMs())
        check.wakeUpMs.reset();
    if (m_served(id))
        consider(id, check);
    else
        handleRemoved(id);
}

} // namespace agent
