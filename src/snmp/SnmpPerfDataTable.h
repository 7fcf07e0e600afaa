// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPPERFDATATABLE_H
#define VIGIL_SNMP_SNMPPERFDATATABLE_H

#include "snmp/SnmpTable.h"

/// One row for each result with performance data. All columns are texts. Read-only for the manager.
class SnmpPerfDataTable : public SnmpTable<std::string>
{
public:
    SnmpPerfDataTable(const std::string& firstKey, const std::string& secondKey);

    /// Writes the row of the result with this name and creates it if absent.
    void setRow(const std::string& name, const std::string& label, const std::string& value,
                const std::string& unit, const std::string& warning, const std::string& critical);
};

#endif
