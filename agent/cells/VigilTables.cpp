// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/VigilTables.h"

#include <algorithm>

namespace agent::vigilTables {

namespace {

constexpr unsigned int entryArc = 1;
constexpr int longestText = 65'535;
constexpr int longestRange = 255;

Column text(unsigned int number, const char* name)
{
    return {number, name, Type::Text, 0, longestText, false};
}

Column status(unsigned int number, const char* name)
{
    return {number, name, Type::Integer, 0, 3, false};
}

Column range(unsigned int number, const char* name)
{
    return {number, name, Type::Text, 0, longestRange, false};
}

Column trigger(unsigned int number, const char* name)
{
    return {number, name, Type::Integer, 1, 2, true};
}

Column writable(Column column)
{
    column.isWritable = true;
    return column;
}

/// An octet of a key. Octets above 127 arrive as negative numbers.
bool isOctet(unsigned int arc)
{
    return arc <= 0xff || arc >= 0xffff'ff80U;
}

/// True if the arcs from position to the end are keys: each its length, then its octets.
bool isIndex(const ObjectId& id, size_t position, int keys)
{
    for (int key = 0; key < keys; ++key) {
        if (position >= id.size() || id[position] > id.size() - position - 1)
            return false;
        const auto octets = id.begin() + static_cast<std::ptrdiff_t>(position) + 1;
        if (!std::all_of(octets, octets + static_cast<std::ptrdiff_t>(id[position]), isOctet))
            return false;
        position += 1 + id[position];
    }
    return position == id.size();
}

const Table* tableOf(const ObjectId& id)
{
    const size_t position = vigilMibRoot().size();
    if (id.size() <= position || !isInTree(vigilMibRoot(), id))
        return nullptr;
    const auto table = std::find_if(all().begin(), all().end(),
                                    [&](const Table& each) { return each.number == id[position]; });
    return table == all().end() ? nullptr : &*table;
}

const Column* columnIn(const Table& table, const ObjectId& id)
{
    const size_t entry = vigilMibRoot().size() + 1;
    if (id.size() <= entry + 1 || id[entry] != entryArc)
        return nullptr;
    const auto column = std::find_if(table.columns.begin(), table.columns.end(),
                                     [&](const Column& each) { return each.number == id[entry + 1]; });
    return column == table.columns.end() ? nullptr : &*column;
}

bool isOfType(const Column& column, const CellValue& value)
{
    return std::holds_alternative<int>(value) == (column.type == Type::Integer);
}

Error misfit(const ObjectId& id, const QString& reason)
{
    return Error(
        QStringLiteral("publishes %1, which does not fit into the tables of VIGIL-MIB: %2. It is not "
                       "served; update the application or the agent")
            .arg(toText(id), reason));
}

} // namespace

const std::vector<Table>& all()
{
    static const std::vector<Table> tables = {
        {1,
         "vigilHealthCheckTable",
         2,
         {status(3, "vigilHealthCheckStatus"), text(4, "vigilHealthCheckSummary")}},
        {2,
         "vigilMetricTable",
         3,
         {text(2, "vigilMetricUnit"),
          writable(range(3, "vigilMetricWarningRange")),
          writable(range(4, "vigilMetricCriticalRange")),
          {5, "vigilMetricRemoteChange", Type::Integer, 0, 1, false}}},
        {3,
         "vigilMetricResultTable",
         3,
         {status(1, "vigilMetricResultStatus"), text(2, "vigilMetricResultSummary")}},
        {4,
         "vigilPerfDataTable",
         3,
         {text(1, "vigilPerfDataLabel"), text(2, "vigilPerfDataValue"), text(3, "vigilPerfDataUnit"),
          range(4, "vigilPerfDataWarning"), range(5, "vigilPerfDataCritical")}},
        {5,
         "vigilMgmFuncTable",
         2,
         {trigger(1, "vigilMgmFuncTrigger1"), trigger(2, "vigilMgmFuncTrigger2"),
          trigger(3, "vigilMgmFuncTrigger3"), trigger(4, "vigilMgmFuncTrigger4"),
          writable(text(5, "vigilMgmFuncCommand"))}},
    };
    return tables;
}

const Column* columnOf(const ObjectId& cell)
{
    const Table* table = tableOf(cell);
    return table ? columnIn(*table, cell) : nullptr;
}

bool isInRange(const Column& column, const CellValue& value)
{
    const int* number = std::get_if<int>(&value);
    if (number)
        return *number >= column.least && *number <= column.most;
    return std::get<std::string>(value).size() <= static_cast<size_t>(column.most);
}

Error checkCell(const ObjectId& id, const CellValue& value)
{
    const Table* table = tableOf(id);
    if (!table)
        return {};
    const Column* column = columnIn(*table, id);
    if (!column)
        return misfit(id, QStringLiteral("%1 has no such column").arg(QLatin1String(table->name)));
    const QLatin1String name(column->name);
    if (!isIndex(id, vigilMibRoot().size() + 3, table->keys))
        return misfit(id, QStringLiteral("the index of %1 is %2 texts").arg(name).arg(table->keys));
    if (!isOfType(*column, value))
        return misfit(id, column->type == Type::Integer ? QStringLiteral("%1 is a number").arg(name)
                                                        : QStringLiteral("%1 is a text").arg(name));
    if (isInRange(*column, value))
        return {};
    if (column->type == Type::Text)
        return misfit(id, QStringLiteral("%1 has at most %2 bytes").arg(name).arg(column->most));
    return misfit(id, QStringLiteral("%1 is from %2 to %3").arg(name).arg(column->least).arg(column->most));
}

} // namespace agent::vigilTables
