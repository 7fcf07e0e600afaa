// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPMETRICRESULTTABLE_H
#define VIGIL_SNMP_SNMPMETRICRESULTTABLE_H

#include "snmp/SnmpTable.h"

/// One row for each result of a health check: the metric's status and text. Read-only for the manager.
class SnmpMetricResultTable : public SnmpTable<std::string>
{
public:
    SnmpMetricResultTable(const std::string& firstKey, const std::string& secondKey);

    /// Writes the row of the result with this name and creates it if absent.
    void setRow(const std::string& name, unsigned int status, const std::string& summary);
};

#endif
