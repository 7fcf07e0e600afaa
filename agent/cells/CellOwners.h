// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_CELLOWNERS_H
#define VIGIL_AGENT_CELLS_CELLOWNERS_H

#include <QString>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The applications as owners of cells: a manager's SET asks them.
///
/// Failure: ask() and commit() do nothing if the owner is not connected. Its answer can also never come.
class CellOwners
{
public:
    virtual ~CellOwners() = default;

    virtual bool isConnected(ApplicationId owner) const = 0;

    /// As messages name it, connected or not.
    virtual QString nameOf(ApplicationId owner) const = 0;

    /// Asks whether a manager may set the cell. The answer carries the same number.
    virtual void ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value) = 0;

    /// Tells the owner that a manager has set the cell.
    virtual void commit(ApplicationId owner, const ObjectId& id, const CellValue& value) = 0;
};

} // namespace agent

#endif
