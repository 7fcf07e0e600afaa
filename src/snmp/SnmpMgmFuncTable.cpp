// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpMgmFuncTable.h"

#include "snmp/VigilMib.h"

SnmpMgmFuncTable::SnmpMgmFuncTable() : SnmpTable(entryOfTable(5), {1, 2, 3, 4, 5}) {}

void SnmpMgmFuncTable::setRow(const StringPair& key, unsigned int trigger1, int trigger2, int trigger3,
                              int trigger4, const std::string& command)
{
    RowWriter row(*this, key, IfMissing::Create);
    if (!row)
        return;
    row.write(0, static_cast<int>(trigger1));
    row.write(1, trigger2);
    row.write(2, trigger3);
    row.write(3, trigger4);
    row.write(4, command);
}
