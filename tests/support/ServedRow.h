// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SERVEDROW_H
#define VIGIL_SUPPORT_SERVEDROW_H

#include <string>

#include "agent/cells/CellStore.h"
#include "agent/cells/HealthTable.h"

namespace support {

/// The cell as managers read it; "-" without a cell.
inline std::string servedCell(const agent::CellStore& store, const agent::ObjectId& id)
{
    const agent::Cell* cell = store.find(id);
    if (!cell)
        return "-";
    const int* number = std::get_if<int>(&cell->served());
    return number ? std::to_string(*number) : std::get<std::string>(cell->served());
}

/// Status and summary of a health check as managers read them, such as "1 text".
inline std::string servedRow(const agent::CellStore& store, const agent::ObjectId& check)
{
    using agent::healthTable::cellOf;
    using agent::healthTable::Column;
    return servedCell(store, cellOf(Column::Status, check)) + ' ' +
           servedCell(store, cellOf(Column::Summary, check));
}

} // namespace support

#endif
