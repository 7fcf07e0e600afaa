// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_INTERNALMETRIC_H
#define VIGIL_HEALTH_INTERNALMETRIC_H

#include <vigil/Metric.h>
#include <vigil/Result.h>

#include "types/PerformanceData.h"

/// A metric as its health check sees it: something that can be evaluated. Threads and ownership as for the
/// metric.
class InternalMetric : public vigil::Metric
{
public:
    /// Judges the metric. False when there is nothing to say about it.
    virtual bool evaluate(vigil::Result& out) = 0;

    /// Fills in the metric's numbers. False, with out untouched, when it has none to show.
    virtual bool getPerformanceData(PerformanceData& out) = 0;

protected:
    ~InternalMetric() = default;
};

#endif
