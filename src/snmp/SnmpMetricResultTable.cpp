// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpMetricResultTable.h"

#include "snmp/VigilMib.h"

SnmpMetricResultTable::SnmpMetricResultTable(const std::string& firstKey, const std::string& secondKey)
    : SnmpTable(entryOfTable(3), {1, 2})
{
    appendIndexPrefix(firstKey);
    appendIndexPrefix(secondKey);
}

void SnmpMetricResultTable::setRow(const std::string& name, unsigned int status, const std::string& summary)
{
    RowWriter row(*this, name, IfMissing::Create);
    if (!row)
        return;
    row.write(0, static_cast<int>(status));
    row.write(1, summary);
}
