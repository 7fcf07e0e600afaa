#ifndef VIGIL_AGENT_SERVEDCELLS_H
#define VIGIL_AGENT_SERVEDCELLS_H

#include <QObject>

#include "CellStore.h"
#include "Clock.h"
#include "HealthTable.h"

namespace agent {

/// What applications do to their cells, and what managers read of it.
///
/// Purpose: the published value of a cell and the one that managers read differ where the agent knows better
/// than the last thing that the application said about its health. Every change of a cell that an
/// application makes goes through here, and whoever wants to know about health checks listens here.
///
/// Threads: the agent has one. Ownership: store and clock must outlive it. Failure: none.
class ServedCells : public QObject
{
    Q_OBJECT

public:
    ServedCells(CellStore& store, Clock& clock);

    /// Returns the connected application from which the cell has been taken over, if there was one.
    std::optional<OwnerId> publish(OwnerId owner, const ObjectId& id, const CellValue& value);

    /// Removes the owner's cells at and below tree. Returns how many there were.
    size_t unset(OwnerId owner, const ObjectId& tree);

    /// The owner's connection has ended. Returns whether it has left cells behind; ownerGone() follows then.
    bool lose(OwnerId owner);

    const CellStore& store() const { return m_store; }

signals:
    // A check is named by the index of its row. When a signal comes, the store serves the new state already.

    /// An application has written the status cell; the value that it wrote.
    void statusWritten(const agent::ObjectId& check, int status);

    /// An application has written the summary cell. The library writes it right behind the status.
    void summaryWritten(const agent::ObjectId& check, const std::string& summary);

    /// The agent itself has made status and summary of the row say UNKNOWN and why.
    void overruled(const agent::ObjectId& check);

    /// The status cell is no longer there.
    void checkRemoved(const agent::ObjectId& check);

    /// The last cell of a lost connection has gone, or has got another owner.
    void ownerGone(agent::OwnerId owner);

private:
    void tellWritten(const ObjectId& id, const CellValue& value);
    void tellRemoved(const std::vector<ObjectId>& ids);

    CellStore& m_store;
};

} // namespace agent

#endif
