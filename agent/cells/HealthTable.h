// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_HEALTHTABLE_H
#define VIGIL_AGENT_CELLS_HEALTHTABLE_H

#include <optional>

#include "agent/cells/StatusTable.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// Where the cells of vigilHealthCheckTable are.
namespace healthTable {

using Column = StatusTable::Column;

/// UNKNOWN
constexpr int unknownStatus = 3;

struct Position
{
    Column column;
    ObjectId check; ///< index of the row: the two keys of the check
};

/// Nothing if id is not a status or summary cell.
std::optional<Position> positionOf(const ObjectId& id);

/// The tree with all cells of the column.
ObjectId column(Column column);

ObjectId cellOf(Column column, const ObjectId& check);

} // namespace healthTable
} // namespace agent

#endif
