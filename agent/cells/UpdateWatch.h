// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_UPDATEWATCH_H
#define VIGIL_AGENT_CELLS_UPDATEWATCH_H

#include <map>
#include <optional>

#include "agent/cells/UpdateRhythm.h"
#include "agent/core/Clock.h"
#include "agent/core/DeadlineQueue.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// Reports checks without an update for too long: a fixed time for all, or a time learned for each.
///
/// Ownership: the clock must outlive it.
class UpdateWatch
{
public:
    /// In place of a time: no check is too late.
    static constexpr qint64 never = -1;

    /// In place of a time: each check has a rhythm of its own, or none; see UpdateRhythm.
    static constexpr qint64 learned = -2;

    /// Called from the event loop, once for each silence.
    using Silent = DeadlineQueue<ObjectId>::Expired;

    /// staleAfterMs is a time, never or learned.
    UpdateWatch(Clock& clock, qint64 staleAfterMs, Silent silent);

    void handleUpdate(const ObjectId& check);

    /// Another application has published the check. The time since the last update is no interval.
    void handleTakenOver(const ObjectId& check);

    /// The check is not watched until its next update.
    void pause(const ObjectId& check) { m_waiting.remove(check); }

    void remove(const ObjectId& check);

private:
    void wait(const ObjectId& check, std::optional<qint64> longestMs);

    Clock& m_clock;
    const qint64 m_staleAfterMs;
    std::map<ObjectId, UpdateRhythm> m_rhythms; // empty unless learned
    DeadlineQueue<ObjectId> m_waiting;
};

} // namespace agent

#endif
