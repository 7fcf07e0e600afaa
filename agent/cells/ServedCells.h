// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_SERVEDCELLS_H
#define VIGIL_AGENT_CELLS_SERVEDCELLS_H

#include <QObject>

#include "agent/cells/CellStore.h"
#include "agent/cells/CheckCovers.h"
#include "agent/cells/HealthTable.h"
#include "agent/cells/LostApplications.h"
#include "agent/cells/LostCheck.h"
#include "agent/core/Clock.h"

namespace agent {

/// The cells as applications change them and managers read them.
///
/// Every change by an application goes through here, and listeners hear here about changes of health checks.
/// LostApplications decides what happens to cells after a loss, CheckCovers which checks read UNKNOWN.
///
/// Ownership: store and clock must outlive it.
class ServedCells : public QObject, private LostApplications::Actions
{
    Q_OBJECT

public:
    struct Settings
    {
        LostApplications::Settings lost;
        qint64 staleAfterMs = UpdateWatch::never; ///< without an update, a check is stale
    };

    ServedCells(CellStore& store, Clock& clock, const Settings& settings);

    /// Returns the connected application that owned the cell before, if there was another one.
    std::optional<ApplicationId> publish(ApplicationId application, const ObjectId& id,
                                         const CellValue& value);

    /// Removes the application's own cells at and below tree. Returns their number.
    size_t unset(ApplicationId application, const ObjectId& tree);

    /// The application's connection has ended. Returns true if it has cells left; applicationGone() follows
    /// then.
    bool lose(const Owner& owner);

    /// Removes some cells of the user's application that has been lost for longest; the others follow. False
    /// if there is none.
    bool removeSomeLostOf(const User& user) { return m_lost.removeSomeOf(user); }

    /// Removes the cells of a lost application, from the next turn of the event loop on. False if it is not
    /// lost.
    bool forget(ApplicationId application) { return m_lost.forget(application); }

    /// The health checks that the application owns.
    std::vector<LostCheck> checksOf(ApplicationId application) const;

    /// The check as managers read it; nothing if there is none.
    std::optional<LostCheck> shownCheck(const ObjectId& check) const;

    /// The owner of the check, which must exist.
    ApplicationId ownerOf(const ObjectId& check) const;

    /// Serves health checks that were lost in the agent's last run.
    void restore(const Owner& owner, const QDateTime& since, const std::vector<LostCheck>& checks);

    const CellStore& store() const { return m_store; }

signals:
    // check is the index of a row. The store already holds the new state.

    /// An application has written this value to the status cell.
    void statusWritten(const agent::ObjectId& check, int status);

    /// An application has written this text to the summary cell. The library does so right after the status.
    void summaryWritten(const agent::ObjectId& check, const std::string& summary);

    /// The agent has covered the row: managers read UNKNOWN.
    void checkCovered(const agent::ObjectId& check);

    /// The row of a lost application is about to be removed. Managers read UNKNOWN so far.
    void checkForgotten(const agent::ObjectId& check);

    /// The row of a check lost in the agent's last run is served again.
    void checkRestored(const agent::ObjectId& check);

    /// The status cell has been removed.
    void checkRemoved(const agent::ObjectId& check);

    // metric is the index of a row of vigilMetricResultTable. Updates of its cells are not reported.

    /// A status cell has appeared in the row.
    void resultAdded(const agent::ObjectId& metric);

    /// The status cell of the row has been removed.
    void resultRemoved(const agent::ObjectId& metric);

    /// A lost application has no cells left.
    void applicationGone(agent::ApplicationId application);

private:
    void handleWritten(const healthTable::Position& position, const CellValue& value, bool isTakenOver);
    void handleResultWritten(const ObjectId& id, bool isNew);
    void handleRemoved(const std::vector<ObjectId>& ids);
    void cover(ApplicationId application, const QDateTime& lostSince) override;
    void remove(ApplicationId application, size_t most) override;
    void end(ApplicationId application) override;

    CellStore& m_store;
    LostApplications m_lost;
    CheckCovers m_covers;
};

} // namespace agent

#endif
