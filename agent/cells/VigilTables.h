// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_VIGILTABLES_H
#define VIGIL_AGENT_CELLS_VIGILTABLES_H

#include <vector>

#include "agent/cells/Cell.h"
#include "agent/core/Error.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The five tables of VIGIL-MIB: their columns, and which values fit. One cell of another form would keep
/// managers from reading the whole table.
///
/// Everything outside the tables fits: an application may have objects of its own.
namespace vigilTables {

enum class Type { Integer, Text };

struct Column
{
    unsigned int number;
    const char* name; ///< in the MIB
    Type type;
    int least; ///< smallest number, or shortest text in octets
    int most;  ///< largest number, or longest text in octets
    bool isWritable;
};

struct Table
{
    unsigned int number;
    const char* name; ///< in the MIB
    int keys;         ///< texts in the index of a row
    std::vector<Column> columns;
};

const std::vector<Table>& all();

/// Checks an object of an application. An error continues a sentence that starts with the application's name.
Error checkCell(const ObjectId& id, const CellValue& value);

/// The column of the cell, or null outside the tables.
const Column* columnOf(const ObjectId& cell);

/// True if the column can have the value. Its type must be right.
bool isInRange(const Column& column, const CellValue& value);

} // namespace vigilTables
} // namespace agent

#endif
