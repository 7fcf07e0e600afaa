// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_REMOTEMETRICOBSERVER_H
#define VIGIL_SNMP_REMOTEMETRICOBSERVER_H

#include <vigil/RangeChangeHandler.h>

namespace vigil {
class Metric;
class Range;
} // namespace vigil

/// How a metric takes part in the manager's changes of its ranges.
///
/// Threads: checkRangeChange(), applyRange() and onRangeChanged() are called on the client thread, with the
/// callback store's lock held. Ownership: not owned by whoever holds it.
class RemoteMetricObserver
{
public:
    virtual vigil::Metric& getMetric() = 0;

    /// Whether the application accepts the new range.
    virtual bool checkRangeChange(RangeKind kind, const vigil::Range& range) = 0;

    /// The range of that kind has been replaced.
    virtual void onRangeChanged(RangeKind kind) = 0;

    virtual ~RemoteMetricObserver() = default;

    /// Replaces the range of that kind, without publishing it.
    virtual void applyRange(RangeKind kind, const vigil::Range& range) = 0;
};

#endif
