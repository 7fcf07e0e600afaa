// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/Mutes.h"

#include <algorithm>

namespace agent {

Mutes::Mutes(Clock& clock)
    : m_clock(clock), m_deadlines(clock, [this](const ObjectId& check, qint64) { unmute(check); })
{}

Error Mutes::mute(const ObjectId& check, qint64 forMs)
{
    if (!contains(check) && m_until.size() >= most)
        return Error(QStringLiteral("%1 checks are muted already, as many as the agent allows").arg(most));
    const qint64 ms = std::min(forMs, longestMs);
    m_until[check] = m_clock.nowUtc().addMSecs(ms);
    m_deadlines.restart(check, ms);
    emit changed(check);
    return {};
}

bool Mutes::unmute(const ObjectId& check)
{
    m_deadlines.remove(check);
    if (m_until.erase(check) == 0)
        return false;
    emit changed(check);
    return true;
}

QDateTime Mutes::untilOf(const ObjectId& check) const
{
    const auto found = m_until.find(check);
    return found == m_until.end() ? QDateTime() : found->second;
}

void Mutes::restore(const std::map<ObjectId, QDateTime>& mutes)
{
    for (const auto& [check, until] : mutes) {
        const qint64 leftMs = m_clock.nowUtc().msecsTo(until);
        if (leftMs > 0 && mute(check, leftMs))
            return; // there is no more room
    }
}

} // namespace agent
