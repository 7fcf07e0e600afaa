// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpHealthCheckTable.h"

#include "base/DebugOutput.h"
#include "snmp/VigilMib.h"

SnmpHealthCheckTable::SnmpHealthCheckTable() : SnmpTable(entryOfTable(1), {3, 4}) {}

void SnmpHealthCheckTable::setRow(const StringPair& key, unsigned int status, const std::string& summary)
{
    {
        RowWriter row(*this, key, IfMissing::Create);
        if (row) {
            row.write(0, static_cast<int>(status));
            row.write(1, summary);
        }
    }
    base::writeDebug(base::tablesCategory, [&](QDebug line) {
        line << "set SnmpHealthCheckTable row for " << key.first.c_str() << key.second.c_str();
    });
}
