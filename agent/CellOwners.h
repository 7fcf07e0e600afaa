#ifndef VIGIL_AGENT_CELLOWNERS_H
#define VIGIL_AGENT_CELLOWNERS_H

#include "CellStore.h"

namespace agent {

/// The way to the applications that own cells, for whoever handles a manager's SET.
///
/// Threads: the agent has one. Failure: nothing is reported; an owner that is gone, or that is lost before it
/// answers, has lost its cells too.
class CellOwners
{
public:
    virtual ~CellOwners() = default;

    /// Asks whether the manager may set the cell. The answer carries the same number.
    virtual void ask(OwnerId owner, int number, const ObjectId& id, const CellValue& value) = 0;

    /// Tells the owner that the manager has set the cell.
    virtual void commit(OwnerId owner, const ObjectId& id, const CellValue& value) = 0;
};

} // namespace agent

#endif
