// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RANGECHANGEHANDLER_H
#define VIGIL_RANGECHANGEHANDLER_H

#include <vigil/vigil_export.h>

namespace vigil {
class Range;
class ScalarMetric;
} // namespace vigil

/// Which of a metric's two ranges is meant. The numbers are part of the binary interface.
enum class RangeKind : int { Warning = 0, Critical = 1 };

/// Implemented by an application that lets the manager change the ranges of a metric.
///
/// Purpose: consent. Without a handler every change is refused.
///
/// Threads: both operations are called on the library's client thread, one call at a time in the whole
/// process, while the library holds the lock of its callback registry. Return quickly: the manager is
/// waiting, and so is everything that the library sends. Registering, clearing or removing anything from
/// inside is not possible; it is refused with an error line in the log. The setters of the metric may be
/// called.
///
/// Ownership: belongs to the application; ScalarMetric::clearRangeChangeHandler() comes before its
/// destruction.
///
/// Failure: must not throw.
class VIGIL_EXPORT RangeChangeHandler
{
public:
    virtual ~RangeChangeHandler() = default;

    /// The manager asks to set the warning or the critical range of metric; return false to refuse. Nothing
    /// has changed yet, and a change that is accepted here may still not come: the manager's request can fail
    /// elsewhere.
    virtual bool acceptRangeChange(vigil::ScalarMetric* metric, RangeKind kind,
                                   const vigil::Range& range) = 0;

    /// The metric has the new range; HealthCheck::update() will judge by it. The library publishes nothing on
    /// this occasion: the service shows the text that the manager wrote, but after the connection is lost and
    /// made again it gets the text that was published last. To publish the new one, set it again here:
    ///
    ///     metric->setWarningRange(metric->getWarningRange());
    virtual void rangeChanged(vigil::ScalarMetric* metric, RangeKind kind) = 0;
};

namespace vigil {
using ::RangeChangeHandler;
using ::RangeKind;
} // namespace vigil

#endif
