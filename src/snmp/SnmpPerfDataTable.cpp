// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpPerfDataTable.h"

#include "snmp/VigilMib.h"

SnmpPerfDataTable::SnmpPerfDataTable(const std::string& firstKey, const std::string& secondKey)
    : SnmpTable(entryOfTable(4), {1, 2, 3, 4, 5})
{
    appendIndexPrefix(firstKey);
    appendIndexPrefix(secondKey);
}

void SnmpPerfDataTable::setRow(const std::string& name, const std::string& label, const std::string& value,
                               const std::string& unit, const std::string& warning,
                               const std::string& critical)
{
    createRowIfAbsent(name);
    writeCell(name, 0, label);
    writeCell(name, 1, value);
    writeCell(name, 2, unit);
    writeCell(name, 3, warning);
    writeCell(name, 4, critical);
}
