// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/UpdateWatch.h"

#include <utility>

namespace agent {

UpdateWatch::UpdateWatch(Clock& clock, qint64 staleAfterMs, Silent silent)
    : m_clock(clock), m_staleAfterMs(staleAfterMs), m_waiting(clock, std::move(silent))
{}

void UpdateWatch::handleUpdate(const ObjectId& check)
{
    if (m_staleAfterMs != learned)
        return wait(check, m_staleAfterMs);
    UpdateRhythm& rhythm = m_rhythms[check];
    rhythm.update(m_clock.elapsedMs());
    wait(check, rhythm.longestSilenceMs());
}

void UpdateWatch::handleTakenOver(const ObjectId& check)
{
    if (m_staleAfterMs != learned)
        return wait(check, m_staleAfterMs);
    UpdateRhythm& rhythm = m_rhythms[check];
    rhythm.restart(m_clock.elapsedMs());
    wait(check, rhythm.longestSilenceMs());
}

void UpdateWatch::wait(const ObjectId& check, std::optional<qint64> longestMs)
{
    if (longestMs && *longestMs != never)
        m_waiting.restart(check, *longestMs);
    else
        m_waiting.remove(check);
}

void UpdateWatch::remove(const ObjectId& check)
{
    m_waiting.remove(check);
    m_rhythms.erase(check);
}

} // namespace agent
