// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_REMOTEMETRICOBSERVER_H
#define VIGIL_SNMP_REMOTEMETRICOBSERVER_H

#include <vigil/RangeChangeHandler.h>

namespace vigil {
class Metric;
class Range;
} // namespace vigil

/// A metric with ranges writable for a manager.
///
/// Threads: checkRangeChange(), applyRange() and onRangeChanged() are called on the client thread, with the
/// callback store's lock held. Ownership: the metric owns itself; connector and adapter only point to it.
class RemoteMetricObserver
{
public:
    virtual vigil::Metric& getMetric() = 0;

    /// Whether the application accepts the new range.
    virtual bool checkRangeChange(RangeKind kind, const vigil::Range& range) = 0;

    /// Called after applyRange().
    virtual void onRangeChanged(RangeKind kind) = 0;

    virtual ~RemoteMetricObserver() = default;

    /// Replaces the range without publishing it.
    virtual void applyRange(RangeKind kind, const vigil::Range& range) = 0;
};

#endif
