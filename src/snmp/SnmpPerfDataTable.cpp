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
    RowWriter row(*this, name, IfMissing::Create);
    if (!row)
        return;
    row.write(0, label);
    row.write(1, value);
    row.write(2, unit);
    row.write(3, warning);
    row.write(4, critical);
}
