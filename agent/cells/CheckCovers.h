// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_CHECKCOVERS_H
#define VIGIL_AGENT_CELLS_CHECKCOVERS_H

#include <QDateTime>

#include <functional>

#include "agent/cells/CellStore.h"
#include "agent/cells/LostApplications.h"
#include "agent/cells/StatusTable.h"
#include "agent/cells/UpdateWatch.h"
#include "agent/core/Clock.h"

namespace agent {

/// Covers the rows of health checks, and of their results, if the agent knows better than their last update.
///
/// The state of a check decides what managers read of its row:
///
///     AsPublished  status and summary as published
///     Stale        UNKNOWN and "No update since ..."
///     Lost         UNKNOWN and "No connection to the application since ..."
///
///     state       | status written         | summary written | no update for | grace over    | status
///                 |                        |                 | too long      | after a loss  | removed
///     ------------+------------------------+-----------------+---------------+---------------+-----------
///     AsPublished | restart delay          | uncover it (1)  | cover → Stale | cover → Lost  | stop delay
///     Stale       | uncover, restart delay | none (2)        | cannot be     | cover → Lost  | row ends
///                 | → AsPublished          |                 |               |               |
///     Lost        | uncover, restart delay | uncover it      | cannot be     | cannot be     | row ends
///                 | → AsPublished          |                 |               |               |
///
/// (1) A summary is still covered if only the status of its row was removed.
/// (2) "uncover it" if the owner of the status is lost, within its grace period.
///
/// The cover of the status cell holds the state, so the state ends with the cell. A row belongs to the owner
/// of its status cell. If a connected application owns the summary, a loss does not cover it.
///
/// The rows of vigilMetricResultTable with the same owner are covered with the check, with the same texts. A
/// loss covers all rows of the lost application. A result reads as published once its status is written, or
/// once a stale check is updated. Performance data are never covered: they are the last values.
///
/// Ownership: store, lost and clock must outlive it.
class CheckCovers
{
public:
    enum class State { AsPublished, Stale, Lost };

    /// check is the index of a row; both its cells already read UNKNOWN and why.
    using Covered = std::function<void(const ObjectId& check)>;

    /// staleAfterMs is a time, or one of the constants of UpdateWatch.
    CheckCovers(CellStore& store, const LostApplications& lost, Clock& clock, qint64 staleAfterMs,
                Covered covered);

    /// isTakenOver: it was another application's before.
    void handleStatusWritten(const ObjectId& check, bool isTakenOver = false);
    void handleSummaryWritten(const ObjectId& check);
    void handleStatusRemoved(const ObjectId& check);

    /// A cell of vigilMetricResultTable has been written.
    void handleResultWritten(const ObjectId& cell);

    /// Covers all rows of the application.
    void handleGraceOver(ApplicationId application, const QDateTime& lostSince);

    State stateOf(const ObjectId& check) const;

private:
    void handleStale(const ObjectId& check, qint64 silentMs);
    void coverLost(const ObjectId& check, const std::string& summary);
    void coverResults(const ObjectId& tree, ApplicationId owner, const Cover& summary);
    void uncoverResults(const ObjectId& check);
    bool isOfLost(const ObjectId& cell) const;

    CellStore& m_store;
    const LostApplications& m_lost;
    Clock& m_clock;
    const Covered m_covered;
    UpdateWatch m_watch;
};

} // namespace agent

#endif
