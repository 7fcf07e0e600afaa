// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/Mutes.h"

#include <algorithm>
#include <cstdlib>

namespace agent {

Mutes::Mutes(Clock& clock)
    : m_clock(clock), m_deadlines(clock, [this](const ObjectId& check, qint64) { unmute(check); })
{}

Error Mutes::mute(const ObjectId& check, qint64 forMs)
{
    if (!contains(check) && m_running.size() >= most)
        return Error(QStringLiteral("%1 checks are muted already, as many as the agent allows").arg(most));
    const qint64 ms = std::min(forMs, longestMs);
    m_running[check] = {{m_clock.nowUtc().addMSecs(ms), ms}, m_clock.elapsedMs() + ms};
    m_deadlines.restart(check, ms);
    emit changed(check);
    return {};
}

bool Mutes::unmute(const ObjectId& check)
{
    m_deadlines.remove(check);
    if (m_running.erase(check) == 0)
        return false;
    emit changed(check);
    return true;
}

QDateTime Mutes::untilOf(const ObjectId& check) const
{
    const auto found = m_running.find(check);
    return found == m_running.end() ? QDateTime() : untilOf(found->second);
}

/// The two clocks differ by a little, which must not change the time shown.
QDateTime Mutes::untilOf(const Running& running) const
{
    constexpr qint64 toleranceMs = 1000;
    const QDateTime until = m_clock.nowUtc().addMSecs(running.endMs - m_clock.elapsedMs());
    const bool isSame = std::abs(running.mute.until.msecsTo(until)) <= toleranceMs;
    return isSame ? running.mute.until : until;
}

std::map<ObjectId, Mute> Mutes::all() const
{
    std::map<ObjectId, Mute> mutes;
    for (const auto& [check, running] : m_running)
        mutes[check] = {untilOf(running), running.mute.forMs};
    return mutes;
}

void Mutes::restore(const std::map<ObjectId, Mute>& mutes)
{
    for (const auto& [check, saved] : mutes) {
        const qint64 leftMs = std::min(m_clock.nowUtc().msecsTo(saved.until), saved.forMs);
        if (leftMs > 0 && mute(check, leftMs))
            return; // there is no more room
    }
}

} // namespace agent
