// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/HealthTable.h"

#include <utility>

namespace agent::healthTable {

namespace {

const StatusTable& table()
{
    static const StatusTable checks(below(vigilMibRoot(), {1, 1}), 3, 4);
    return checks;
}

} // namespace

std::optional<Position> positionOf(const ObjectId& id)
{
    std::optional<StatusTable::Position> position = table().positionOf(id);
    if (!position)
        return std::nullopt;
    return Position{position->column, std::move(position->row)};
}

ObjectId column(Column column)
{
    return table().column(column);
}

ObjectId cellOf(Column column, const ObjectId& check)
{
    return table().cellOf(column, check);
}

} // namespace agent::healthTable
