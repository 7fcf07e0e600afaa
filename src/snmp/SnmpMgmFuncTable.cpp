// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpMgmFuncTable.h"

SnmpMgmFuncTable::SnmpMgmFuncTable() : SnmpTable(".1.3.6.1.4.1.32473.127.3.1.200.4.5.1", {1, 2, 3, 4, 5}) {}

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
