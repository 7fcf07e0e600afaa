// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_CHECKCELLS_H
#define VIGIL_SUPPORT_CHECKCELLS_H

#include <map>
#include <string>
#include <vector>

#include <vigil/vigil.h>

#include "support/Publications.h"

namespace support {

/// The cells a service must show for a check and its metrics, as they are after an update. From the
/// identifier to the publication, as in ShownCells.
class CheckCells
{
public:
    /// The rows of the check and of its results.
    void addCheck(const vigil::HealthCheck& check)
    {
        add(1, 3, indexOf(check), static_cast<int>(check.getStatus()));
        add(1, 4, indexOf(check), check.getSummary());
        std::vector<vigil::Result> results;
        check.getResults(results);
        for (const vigil::Result& result : results) {
            const Index index = indexOf(check, result.getName());
            add(3, 1, index, static_cast<int>(result.getStatus()));
            add(3, 2, index, result.getSummary());
        }
    }

    void addManagement(const vigil::HealthCheck& check)
    {
        for (int column = 1; column <= 4; ++column)
            add(5, column, indexOf(check), 1);
        add(5, 5, indexOf(check), std::string());
    }

    void addMetric(const vigil::HealthCheck& check, const vigil::Metric& metric, bool hasHandler = false)
    {
        const Index index = indexOf(check, metric.getName());
        add(2, 2, index, metric.getUnit());
        add(2, 3, index, metric.getWarningRange().toString());
        add(2, 4, index, metric.getCriticalRange().toString());
        add(2, 5, index, hasHandler ? 1 : 0);
    }

    /// Of a metric with an integer as its value.
    void addPerformanceData(const vigil::HealthCheck& check, const vigil::ScalarMetric& metric)
    {
        const Index index = indexOf(check, metric.getName());
        add(4, 1, index, metric.getName());
        add(4, 2, index, std::to_string(static_cast<int>(metric.getValue())));
        add(4, 3, index, metric.getUnit());
        add(4, 4, index, metric.getWarningRange().toString());
        add(4, 5, index, metric.getCriticalRange().toString());
    }

    const std::map<std::string, std::string>& cells() const { return m_cells; }

private:
    using Index = std::vector<std::string>;

    static Index indexOf(const vigil::HealthCheck& check)
    {
        return {check.getFirstKey(), check.getSecondKey()};
    }

    static Index indexOf(const vigil::HealthCheck& check, const std::string& metric)
    {
        return {check.getFirstKey(), check.getSecondKey(), metric};
    }

    template <typename Value>
    void add(int table, int column, const Index& index, const Value& value)
    {
        const std::string oid = cell(table, column, index);
        m_cells[oid] = set(oid, value);
    }

    std::map<std::string, std::string> m_cells;
};

} // namespace support

#endif
