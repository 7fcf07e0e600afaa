// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/notifications/NotificationPolicy.h"

#include <utility>

#include "agent/checks/Severity.h"
#include "agent/core/ShortText.h"

namespace agent {

namespace {

constexpr qint64 summaryWaitMs = 200;
constexpr qint64 muteMs = 1000;
constexpr size_t longestSummary = 1000; // a notification has room for little more

bool needsAttention(int status)
{
    return status == status::warning || status == status::critical;
}

} // namespace

NotificationPolicy::NotificationPolicy(Clock& clock, const Mutes& mutes, LookUp served, Notify notify)
    : m_clock(clock),
      m_mutes(mutes),
      m_served(std::move(served)),
      m_notify(std::move(notify)),
      m_awaiting(clock, summaryWaitMs, [this](const ObjectId& id, qint64) { handle(Overdue, id); }),
      m_justNotified(clock, muteMs, [this](const ObjectId& id, qint64) { handle(Unmuted, id); })
{
    connect(&mutes, &Mutes::changed, this, &NotificationPolicy::handleMuteChanged);
}

void NotificationPolicy::handleStatusWritten(const ObjectId& id, int status)
{
    const int before = std::exchange(checkOf(id).written, status);
    handle(status != before ? NewStatus : SameStatus, id);
}

void NotificationPolicy::handleSummaryWritten(const ObjectId& id, const std::string& summary)
{
    handle(summary.empty() ? EmptySummary : Summary, id);
}

void NotificationPolicy::handleCovered(const ObjectId& id)
{
    checkOf(id).written = healthTable::unknownStatus;
    handle(Covered, id);
}

void NotificationPolicy::handleForgotten(const ObjectId& id)
{
    const auto check = m_checks.find(id);
    const std::optional<Served> served = m_served(id);
    if (check == m_checks.end() || !check->second.notified || !served)
        return;
    const int previous = std::exchange(*check->second.notified, served->status);
    const HealthChange change = {
        id, served->status, previous,
        shortened(served->summary, longestSummary) + " The agent has forgotten the check.", true};
    tell(change);
}

/// Once the check is no longer muted.
void NotificationPolicy::tell(const HealthChange& forgotten)
{
    if (m_mutes.contains(forgotten.check))
        m_forgotten[forgotten.check] = forgotten;
    else
        m_notify(forgotten);
}

void NotificationPolicy::handleMuteChanged(const ObjectId& id)
{
    handle(Unmuted, id);
    if (m_mutes.contains(id))
        return;
    const auto forgotten = m_forgotten.extract(id);
    if (!forgotten.empty())
        m_notify(forgotten.mapped());
}

void NotificationPolicy::handleRemoved(const ObjectId& id)
{
    m_awaiting.remove(id);
    m_checks.erase(id);
}

/// A check of the last run, or one forgotten while muted, goes on from the status managers know.
NotificationPolicy::Check& NotificationPolicy::checkOf(const ObjectId& id)
{
    const auto [position, isNew] = m_checks.try_emplace(id);
    if (isNew) {
        const auto restored = m_restored.extract(id);
        const auto forgotten = m_forgotten.extract(id);
        if (!forgotten.empty())
            position->second = {Settled, healthTable::unknownStatus, forgotten.mapped().previousStatus};
        else if (!restored.empty())
            position->second = {Settled, healthTable::unknownStatus, restored.mapped()};
    }
    return position->second;
}

std::map<ObjectId, int> NotificationPolicy::notified() const
{
    std::map<ObjectId, int> statuses = m_restored;
    for (const auto& [id, change] : m_forgotten)
        statuses[id] = change.previousStatus;
    for (const auto& [id, check] : m_checks) {
        if (check.notified)
            statuses[id] = *check.notified;
    }
    return statuses;
}

void NotificationPolicy::restore(std::map<ObjectId, int> notified, qint64 forMs)
{
    m_restored = std::move(notified);
    if (forMs >= 0)
        m_clock.callAfter(forMs, this, [this] { m_restored.clear(); });
}

std::vector<LostCheck> NotificationPolicy::forgotten() const
{
    std::vector<LostCheck> checks;
    for (const auto& [id, change] : m_forgotten)
        checks.push_back({id, change.status, change.summary});
    return checks;
}

void NotificationPolicy::restoreForgotten(const std::vector<LostCheck>& forgotten)
{
    for (const LostCheck& check : forgotten) {
        const auto known = m_restored.extract(check.check);
        if (!known.empty())
            tell({check.check, check.status, known.mapped(), check.summary, true});
    }
}

void NotificationPolicy::handle(Event event, const ObjectId& id)
{
    const auto position = m_checks.find(id);
    if (position == m_checks.end())
        return;
    Check& check = position->second;
    switch (actions[check.state][event]) {
    case Ignore:
        break;
    case Await:
        enter(AwaitingSummary, id, check);
        break;
    case Compare:
        compare(id, check);
        break;
    }
}

void NotificationPolicy::enter(State state, const ObjectId& id, Check& check)
{
    check.state = state;
    if (state == AwaitingSummary)
        m_awaiting.restart(id);
    else
        m_awaiting.remove(id);
}

void NotificationPolicy::compare(const ObjectId& id, Check& check)
{
    const std::optional<Served> served = m_served(id);
    if (!served)
        return enter(Settled, id, check);
    const int status = served->status;
    if (!check.notified)
        check.notified = needsAttention(status) ? healthTable::unknownStatus : status;
    if (status == *check.notified)
        return enter(Settled, id, check);
    if (isMuted(id))
        return enter(Pending, id, check);
    enter(Settled, id, check);
    m_justNotified.restart(id);
    const int previous = std::exchange(*check.notified, status);
    m_notify({id, status, previous, served->summary, false});
}

} // namespace agent
