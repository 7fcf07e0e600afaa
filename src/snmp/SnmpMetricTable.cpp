// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpMetricTable.h"

#include "base/DebugOutput.h"
#include "snmp/VigilMib.h"

SnmpMetricTable::SnmpMetricTable(const std::string& firstKey, const std::string& secondKey)
    : SnmpTable(entryOfTable(2), {2, 3, 4, 5})
{
    appendIndexPrefix(firstKey);
    appendIndexPrefix(secondKey);
}

void SnmpMetricTable::setRow(const std::string& name, const std::string& unit, const std::string& warning,
                             const std::string& critical)
{
    RowWriter row(*this, name, IfMissing::Skip);
    if (!row)
        return;
    row.write(0, unit);
    row.write(warningRangeIndex, warning);
    row.write(criticalRangeIndex, critical);
    base::writeDebug(base::tablesCategory,
                     [&](QDebug line) { line << "set SnmpMetricTable row for " << name.c_str(); });
}
