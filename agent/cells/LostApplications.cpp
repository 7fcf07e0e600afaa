// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/LostApplications.h"

#include <algorithm>

#include "agent/core/Log.h"

namespace agent {

LostApplications::LostApplications(const CellStore& store, Clock& clock, const Settings& settings,
                                   Actions& actions)
    : m_store(store),
      m_clock(clock),
      m_settings(settings),
      m_actions(actions),
      m_graceDelay(clock, settings.graceMs,
                   [this](ApplicationId application, qint64) { handleGraceOver(application); }),
      m_forgetDelay(clock, settings.forgetMs,
                    [this](ApplicationId application, qint64) { removeAndEnd(application); }),
      m_returnDelay(clock, settings.graceMs,
                    [this](ApplicationId application, qint64) { removeAndEnd(application); })
{}

std::optional<LostApplications::State> LostApplications::stateOf(ApplicationId application) const
{
    const auto loss = m_losses.find(application);
    return loss == m_losses.end() ? std::nullopt : std::optional<State>(loss->second.state);
}

void LostApplications::add(const Owner& owner)
{
    const ApplicationId application = owner.application;
    m_losses[application] = {State::InGrace, ++m_lossCount, m_clock.nowUtc(), owner};
    m_graceDelay.restart(application);
    m_forgetDelay.restart(application);
    while (m_losses.size() > 1 && isRoomShort())
        removeOldestOf(largestUser());
}

void LostApplications::restore(const Owner& owner, const QDateTime& since)
{
    add(owner);
    const auto loss = m_losses.find(owner.application);
    if (loss == m_losses.end())
        return;
    loss->second.since = since;
    const qint64 lostMs = since.msecsTo(m_clock.nowUtc());
    if (lostMs < m_settings.graceMs)
        return;
    m_graceDelay.remove(owner.application);
    handleGraceOver(owner.application);
    const bool isForgotten = m_settings.forgetMs != m_forgetDelay.never && lostMs >= m_settings.forgetMs;
    if (isForgotten)
        removeAndEnd(owner.application);
}

// --- The events of the table

void LostApplications::handleGraceOver(ApplicationId application)
{
    Loss& loss = m_losses.at(application);
    if (loss.state == State::InGrace)
        loss.state = State::Covered;
    m_actions.cover(application, loss.since);
}

void LostApplications::handleCellReturned(ApplicationId application)
{
    if (m_store.countOf(application) == 0)
        return end(application);
    Loss& loss = m_losses.at(application);
    if (loss.state == State::Returning)
        return;
    loss.state = State::Returning;
    m_returnDelay.restart(application);
}

bool LostApplications::forget(ApplicationId application)
{
    if (!contains(application))
        return false;
    removeAndEnd(application);
    return true;
}

bool LostApplications::removeOldestOf(const User& user)
{
    const auto oldest = std::min_element(m_losses.begin(), m_losses.end(), [&](const auto& a, const auto& b) {
        return std::make_pair(a.second.owner.user != user, a.second.number) <
               std::make_pair(b.second.owner.user != user, b.second.number);
    });
    if (oldest == m_losses.end() || oldest->second.owner.user != user)
        return false;
    log::warning(oldest->second.owner.user,
                 QStringLiteral("%1 lost applications still have cells, more than the limits allow; those of "
                                "%2 are removed. Find out which application keeps crashing")
                     .arg(m_losses.size())
                     .arg(oldest->second.owner.name));
    removeAndEnd(oldest->first);
    return true;
}

/// The user with the most lost applications or, if their number is permitted, with the most lost cells.
User LostApplications::largestUser() const
{
    const bool isCountShort = m_losses.size() > m_settings.maxApplications;
    std::map<User, size_t> shares;
    for (const auto& [application, loss] : m_losses)
        shares[loss.owner.user] += isCountShort ? 1 : m_store.countOf(application);
    return std::max_element(shares.begin(), shares.end(),
                            [](const auto& a, const auto& b) { return a.second < b.second; })
        ->first;
}

bool LostApplications::isRoomShort() const
{
    size_t cells = 0;
    for (const auto& [application, loss] : m_losses)
        cells += m_store.countOf(application);
    return m_losses.size() > m_settings.maxApplications || cells > m_settings.maxCells;
}

// --- The actions of the table

void LostApplications::removeAndEnd(ApplicationId application)
{
    m_actions.remove(application);
    end(application);
}

void LostApplications::end(ApplicationId application)
{
    m_losses.erase(application);
    m_graceDelay.remove(application);
    m_forgetDelay.remove(application);
    m_returnDelay.remove(application);
    m_actions.end(application);
}

} // namespace agent
