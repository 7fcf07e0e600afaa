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
    if (!hasRow(name))
        return;
    writeCell(name, 0, unit);
    writeCell(name, warningRangeIndex, warning);
    writeCell(name, criticalRangeIndex, critical);
    base::writeDebug(base::tablesCategory,
                     [&](QDebug line) { line << "set SnmpMetricTable row for " << name.c_str(); });
}
