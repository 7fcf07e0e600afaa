// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/HealthTable.h"

namespace agent::healthTable {

namespace {

const ObjectId entry = below(vigilMibRoot(), {1, 1});

} // namespace

std::optional<Position> positionOf(const ObjectId& id)
{
    const size_t columnAt = entry.size();
    if (id.size() <= columnAt + 1 || !isInTree(entry, id))
        return std::nullopt;
    const auto column = static_cast<Column>(id[columnAt]);
    if (column != Column::Status && column != Column::Summary)
        return std::nullopt;
    return Position{column, ObjectId(id.begin() + static_cast<std::ptrdiff_t>(columnAt) + 1, id.end())};
}

ObjectId column(Column column)
{
    ObjectId id = entry;
    id.push_back(static_cast<unsigned int>(column));
    return id;
}

ObjectId cellOf(Column column, const ObjectId& check)
{
    ObjectId id = healthTable::column(column);
    id.insert(id.end(), check.begin(), check.end());
    return id;
}

} // namespace agent::healthTable
