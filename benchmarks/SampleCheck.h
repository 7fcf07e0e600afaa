// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_SAMPLECHECK_H
#define VIGIL_BENCHMARKS_SAMPLECHECK_H

#include <string>
#include <vector>

#include <vigil/vigil.h>

/// The health check that all benchmarks publish: scalar metrics with a unit and both ranges.
class SampleCheck
{
public:
    explicit SampleCheck(int metrics, const std::string& firstKey = "app");
    ~SampleCheck();
    SampleCheck(const SampleCheck&) = delete;
    SampleCheck& operator=(const SampleCheck&) = delete;

    /// Gives each metric a new value and publishes them all.
    void update();

    int metrics() const { return static_cast<int>(m_metrics.size()); }
    vigil::ScalarMetric& metric(int index) { return *m_metrics.at(static_cast<std::size_t>(index)); }

    /// Two cells of the check and seven of each metric.
    int cellsOfUpdate() const { return 2 + 7 * metrics(); }

    /// One more cell a metric says whether its ranges may be changed, and three have its unit and ranges.
    int allCells() const { return 2 + 11 * metrics(); }

    double value() const { return m_value; }

    vigil::Oid lastValueCell() const;
    vigil::Oid warningRangeCell(int index) const;

private:
    vigil::Oid cellOf(unsigned int table, unsigned int column, int metric) const;

    const std::string m_firstKey;
    vigil::HealthCheck* m_check;
    std::vector<vigil::ScalarMetric*> m_metrics;
    double m_value = 0;
};

#endif
