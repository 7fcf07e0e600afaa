// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpMetricResultTable.h"

SnmpMetricResultTable::SnmpMetricResultTable(const std::string& firstKey, const std::string& secondKey)
    : SnmpTable(".1.3.6.1.4.1.32473.127.3.1.200.4.3.1", {1, 2})
{
    appendIndexPrefix(firstKey);
    appendIndexPrefix(secondKey);
}

void SnmpMetricResultTable::setRow(const std::string& name, unsigned int status, const std::string& summary)
{
    createRowIfAbsent(name);
    setIntColumn(name, 0, status);
    writeCell(name, 1, summary);
}
