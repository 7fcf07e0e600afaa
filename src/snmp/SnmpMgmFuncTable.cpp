// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpMgmFuncTable.h"

#include "snmp/VigilMib.h"

SnmpMgmFuncTable::SnmpMgmFuncTable() : SnmpTable(entryOfTable(5), {1, 2, 3, 4, 5}) {}

void SnmpMgmFuncTable::setRow(const StringPair& key, unsigned int trigger1, int trigger2, int trigger3,
                              int trigger4, const std::string& command)
{
    createRowIfAbsent(key);
    setIntColumn(key, 0, trigger1);
    writeCell(key, 1, trigger2);
    writeCell(key, 2, trigger3);
    writeCell(key, 3, trigger4);
    writeCell(key, 4, command);
}
