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
      m_forgetDelay(clock, [this](ApplicationId application, qint64) { leave(application); }),
      m_returnDelay(clock, settings.graceMs,
                    [this](ApplicationId application, qint64) { leave(application); }),
      m_nextTurn(clock, [this] { removeInTurn(); })
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
    forgetLater(application, 0);
    while (m_losses.size() - m_leaving.size() > 1 && isRoomShort())
        leaveForRoom(*oldestOf(largestUser()));
}

void LostApplications::restore(const Owner& owner, const QDateTime& since)
{
    add(owner);
    const auto loss = m_losses.find(owner.application);
    if (loss == m_losses.end())
        return;
    loss->second.since = since;
    const qint64 lostMs = since.msecsTo(m_clock.nowUtc());
    forgetLater(owner.application, lostMs);
    if (lostMs < m_settings.graceMs)
        return;
    m_graceDelay.remove(owner.application);
    handleGraceOver(owner.application);
    const bool isForgotten = canForget() && lostMs >= m_settings.forgetMs;
    if (!isForgotten)
        return;
    leave(owner.application);
    while (contains(owner.application))
        removePiece(owner.application);
}

/// The application has been lost for lostMs already. The host's time may have been wrong.
void LostApplications::forgetLater(ApplicationId application, qint64 lostMs)
{
    if (canForget())
        m_forgetDelay.restart(application,
                              std::clamp<qint64>(m_settings.forgetMs - lostMs, 0, m_settings.forgetMs));
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
    if (loss.state == State::Returning || loss.state == State::Leaving)
        return;
    loss.state = State::Returning;
    m_returnDelay.restart(application);
}

bool LostApplications::forget(ApplicationId application)
{
    if (!contains(application) || isLeaving(application))
        return false;
    leave(application);
    return true;
}

// --- Room for others

bool LostApplications::removeSomeOf(const User& user)
{
    const auto leaving = std::find_if(m_leaving.begin(), m_leaving.end(), [&](ApplicationId application) {
        return m_losses.at(application).owner.user == user;
    });
    if (leaving != m_leaving.end()) {
        removePiece(*leaving);
        return true;
    }
    const std::optional<ApplicationId> oldest = oldestOf(user);
    if (!oldest)
        return false;
    leaveForRoom(*oldest);
    removePiece(*oldest);
    return true;
}

void LostApplications::leaveForRoom(ApplicationId application)
{
    const Owner& owner = m_losses.at(application).owner;
    log::warning(owner.user,
                 QStringLiteral("%1 lost applications still have cells, more than the limits allow; those of "
                                "%2 are removed. Find out which application keeps crashing")
                     .arg(m_losses.size() - m_leaving.size())
                     .arg(owner.name));
    leave(application);
}

/// Of those that are not leaving.
std::optional<ApplicationId> LostApplications::oldestOf(const User& user) const
{
    std::optional<ApplicationId> oldest;
    for (const auto& [application, loss] : m_losses) {
        const bool isCandidate = loss.owner.user == user && !isLeaving(application);
        if (isCandidate && (!oldest || loss.number < m_losses.at(*oldest).number))
            oldest = application;
    }
    return oldest;
}

/// The user with the most lost applications or, if their number is permitted, with the most lost cells.
User LostApplications::largestUser() const
{
    const bool isCountShort = m_losses.size() - m_leaving.size() > m_settings.maxApplications;
    std::map<User, size_t> shares;
    for (const auto& [application, loss] : m_losses) {
        if (!isLeaving(application))
            shares[loss.owner.user] += isCountShort ? 1 : m_store.countOf(application);
    }
    return std::max_element(shares.begin(), shares.end(),
                            [](const auto& a, const auto& b) { return a.second < b.second; })
        ->first;
}

bool LostApplications::isRoomShort() const
{
    size_t cells = 0;
    for (const auto& [application, loss] : m_losses)
        cells += isLeaving(application) ? 0 : m_store.countOf(application);
    return m_losses.size() - m_leaving.size() > m_settings.maxApplications || cells > m_settings.maxCells;
}

// --- The actions of the table

void LostApplications::leave(ApplicationId application)
{
    log::detail([&] {
        return QStringLiteral("application %1 is forgotten, cells removed: %2")
            .arg(application)
            .arg(m_store.countOf(application));
    });
    m_losses.at(application).state = State::Leaving;
    m_leaving.insert(application);
    stopDelays(application);
    m_nextTurn.startOnce(0);
}

void LostApplications::removeInTurn()
{
    m_turn.start();
    while (!m_leaving.empty() && !m_turn.isOver()) {
        removePiece(*m_leaving.begin());
        m_turn.count();
    }
    if (!m_leaving.empty())
        m_nextTurn.startOnce(0);
}

void LostApplications::removePiece(ApplicationId application)
{
    m_actions.remove(application, pieceSize);
    if (m_store.countOf(application) == 0)
        end(application);
}

void LostApplications::end(ApplicationId application)
{
    m_losses.erase(application);
    m_leaving.erase(application);
    stopDelays(application);
    m_actions.end(application);
}

void LostApplications::stopDelays(ApplicationId application)
{
    m_graceDelay.remove(application);
    m_forgetDelay.remove(application);
    m_returnDelay.remove(application);
}

} // namespace agent
