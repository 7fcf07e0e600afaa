// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPHEALTHCHECKTABLE_H
#define VIGIL_SNMP_SNMPHEALTHCHECKTABLE_H

#include "snmp/SnmpTable.h"

/// One row for each health check of the process: status and summary. Read-only for the manager.
class SnmpHealthCheckTable : public SnmpTable<StringPair>
{
public:
    SnmpHealthCheckTable();

    /// Writes the row of the check with these keys and creates it if absent.
    void setRow(const StringPair& key, unsigned int status, const std::string& summary);
};

#endif
