// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_HEALTHTABLE_H
#define VIGIL_AGENT_CELLS_HEALTHTABLE_H

#include <optional>

#include "agent/core/ObjectId.h"

namespace agent {

/// Where vigilHealthCheckTable has its cells.
///
/// Any thread. Failure: none.
namespace healthTable {

enum class Column : unsigned int { Status = 3, Summary = 4 };

/// The status of a check about which nothing is known.
constexpr int unknownStatus = 3;

struct Position
{
    Column column;
    ObjectId check; ///< the row's index: the two keys of the check
};

/// Nothing when id is no cell of the table.
std::optional<Position> positionOf(const ObjectId& id);

/// The tree of all cells of the column.
ObjectId column(Column column);

ObjectId cellOf(Column column, const ObjectId& check);

} // namespace healthTable
} // namespace agent

#endif
