// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_CELLOWNERS_H
#define VIGIL_AGENT_CELLS_CELLOWNERS_H

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The way to the applications that own cells, for whoever handles a manager's SET.
///
/// Threads: the agent has one. Failure: an owner that is lost is neither asked nor told; isConnected() says
/// so before, and whoever asks hears from the applications' server when it happens after.
class CellOwners
{
public:
    virtual ~CellOwners() = default;

    virtual bool isConnected(ApplicationId owner) const = 0;

    /// Asks whether the manager may set the cell. The answer carries the same number.
    virtual void ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value) = 0;

    /// Tells the owner that the manager has set the cell.
    virtual void commit(ApplicationId owner, const ObjectId& id, const CellValue& value) = 0;
};

} // namespace agent

#endif
