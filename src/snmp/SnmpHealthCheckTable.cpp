// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpHealthCheckTable.h"

#include <QDebug>

SnmpHealthCheckTable::SnmpHealthCheckTable() : SnmpTable(".1.3.6.1.4.1.32473.127.3.1.200.4.1.1", {3, 4}) {}

void SnmpHealthCheckTable::setRow(const StringPair& key, unsigned int status, const std::string& summary)
{
    createRowIfAbsent(key);
    setIntColumn(key, 0, status);
    writeCell(key, 1, summary);
    qDebug() << "set SnmpHealthCheckTable row for " << key.first.c_str() << key.second.c_str();
}
