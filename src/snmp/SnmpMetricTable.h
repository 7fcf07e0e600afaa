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

    /// Writes unit and ranges of a metric whose row exists. Unlike in the other tables no row is made: an
    /// update may come before the metric is announced.
    void setRow(const std::string& name, const std::string& unit, const std::string& warning,
                const std::string& critical);
};

#endif
