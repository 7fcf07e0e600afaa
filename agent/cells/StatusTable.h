// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_STATUSTABLE_H
#define VIGIL_AGENT_CELLS_STATUSTABLE_H

#include <optional>

#include "agent/core/ObjectId.h"

namespace agent {

/// Where the cells of a table are whose rows have a status and a summary.
class StatusTable
{
public:
    enum class Column { Status, Summary };

    struct Position
    {
        Column column;
        ObjectId row; ///< its index
    };

    /// entry is the table's entry; the numbers are those of its columns.
    StatusTable(ObjectId entry, unsigned int status, unsigned int summary);

    bool contains(const ObjectId& id) const { return isInTree(m_entry, id); }

    /// Nothing if id is not a status or summary cell.
    std::optional<Position> positionOf(const ObjectId& id) const;

    /// The tree with all cells of the column.
    ObjectId column(Column column) const;

    ObjectId cellOf(Column column, const ObjectId& row) const;

private:
    const ObjectId m_entry;
    const unsigned int m_status;
    const unsigned int m_summary;
};

/// vigilMetricResultTable. The index of a row starts with the index of its check.
const StatusTable& resultTable();

} // namespace agent

#endif
