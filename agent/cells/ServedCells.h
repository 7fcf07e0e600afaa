// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_SERVEDCELLS_H
#define VIGIL_AGENT_CELLS_SERVEDCELLS_H

#include <QObject>

#include <map>

#include "agent/cells/CellStore.h"
#include "agent/cells/HealthTable.h"
#include "agent/core/Clock.h"
#include "agent/core/DelayQueue.h"

namespace agent {

/// What applications do to their cells, and what managers read of it.
///
/// Purpose: the published value of a cell and the one that managers read differ where the agent knows better
/// than the last thing that the application said about its health. Every change of a cell that an
/// application makes goes through here, and whoever wants to know about health checks listens here.
///
/// A connection that ends leaves its cells behind unless the application has unset them. After a time of
/// grace its health checks read UNKNOWN; later the cells are forgotten. Whatever another connection publishes
/// of them takes their place at once, and ends what is left after another time of grace. A row belongs to
/// whoever owns its status cell.
///
/// A health check that is connected, but whose status cell has not been written for long, reads UNKNOWN too.
///
/// Threads: the agent has one. Ownership: store and clock must outlive it. Failure: none.
class ServedCells : public QObject
{
    Q_OBJECT

public:
    struct Settings
    {
        qint64 graceMs = 10'000;
        qint64 forgetMs = 86'400'000;                           ///< DelayQueue::never is possible
        qint64 staleAfterMs = DelayQueue<ApplicationId>::never; ///< the silence that is too long
        size_t maxLost = 256;                                   ///< connections whose cells are kept
        size_t maxLostCells = 1'000'000;                        ///< that all of them keep
    };

    ServedCells(CellStore& store, Clock& clock, const Settings& settings);

    /// Returns the connected application from which the cell has been taken over, if there was one.
    std::optional<ApplicationId> publish(ApplicationId owner, const ObjectId& id, const CellValue& value);

    /// Removes the owner's cells at and below tree, never those that a lost connection has left behind.
    /// Returns how many there were.
    size_t unset(ApplicationId owner, const ObjectId& tree);

    /// The owner's connection has ended. Returns whether it has left cells behind; applicationGone() follows
    /// then.
    bool lose(ApplicationId owner);

    const CellStore& store() const { return m_store; }

signals:
    // A check is named by the index of its row. When a signal comes, the store serves the new state already.

    /// An application has written the status cell; the value that it wrote.
    void statusWritten(const agent::ObjectId& check, int status);

    /// An application has written the summary cell. The library writes it right behind the status.
    void summaryWritten(const agent::ObjectId& check, const std::string& summary);

    /// The agent itself has made status and summary of the row say UNKNOWN and why.
    void checkCovered(const agent::ObjectId& check);

    /// The status cell is no longer there.
    void checkRemoved(const agent::ObjectId& check);

    /// The last cell of a lost connection has gone, or has got another owner.
    void applicationGone(agent::ApplicationId owner);

private:
    void handleWritten(const healthTable::Position& position);
    void tellWritten(const healthTable::Position& position, const CellValue& value);
    void handleRemoved(const std::vector<ObjectId>& ids);
    void handleTakenOver(ApplicationId lost);
    void overruleLost(ApplicationId owner);
    void overruleSilent(const ObjectId& check, qint64 silentMs);
    bool keepsTooMuch() const;
    void removeOldest();
    void removeAllOf(ApplicationId lost);
    void endLoss(ApplicationId owner);
    bool isLost(ApplicationId owner) const { return m_lostSince.count(owner) > 0; }
    bool isOfLost(const ObjectId& cell) const;

    CellStore& m_store;
    Clock& m_clock;
    const Settings m_settings;
    std::map<ApplicationId, QDateTime> m_lostSince;
    DelayQueue<ApplicationId> m_grace;
    DelayQueue<ApplicationId> m_memory;
    DelayQueue<ApplicationId> m_returns;
    DelayQueue<ObjectId> m_silence;
};

} // namespace agent

#endif
