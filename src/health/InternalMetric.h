// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_INTERNALMETRIC_H
#define VIGIL_HEALTH_INTERNALMETRIC_H

#include <vigil/Metric.h>
#include <vigil/Result.h>

#include "types/PerformanceData.h"

/// The health check's view of a metric.
class InternalMetric : public vigil::Metric
{
public:
    /// Judges the metric. False if it has no result.
    virtual bool evaluate(vigil::Result& out) = 0;

    /// Fills in the metric's performance data. False, with out untouched, if it has no performance data.
    virtual bool getPerformanceData(PerformanceData& out) = 0;

protected:
    ~InternalMetric() = default;
};

#endif
