// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPMETRICTABLE_H
#define VIGIL_SNMP_SNMPMETRICTABLE_H

#include "snmp/SnmpTable.h"

/// One row for each metric of a health check: unit, the two ranges, and whether the manager may change them.
class SnmpMetricTable : public SnmpTable<std::string>
{
public:
    static constexpr int warningRangeIndex = 1;
    static constexpr int criticalRangeIndex = 2;
    static constexpr int remoteChangeIndex = 3;

    SnmpMetricTable(const std::string& firstKey, const std::string& secondKey);

    /// Writes unit and ranges of a metric if its row exists. Unlike the other tables, this one creates no row
    /// here: a metric may be updated before it is announced.
    void setRow(const std::string& name, const std::string& unit, const std::string& warning,
                const std::string& critical);
};

#endif
