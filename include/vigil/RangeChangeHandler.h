// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_RANGECHANGEHANDLER_H
#define VIGIL_RANGECHANGEHANDLER_H

#include <vigil/GlobalNames.h>

namespace vigil {
class Range;
class ScalarMetric;
} // namespace vigil

VIGIL_GLOBAL_BEGIN

/// One of the two ranges of a metric. The numbers are part of the binary interface.
enum class RangeKind : int { Warning = 0, Critical = 1 };

/// The application's consent to range changes by a manager.
///
/// \code
/// class PercentOnly : public vigil::RangeChangeHandler
/// {
///     bool acceptRangeChange(vigil::ScalarMetric*, vigil::RangeKind, const vigil::Range& range) override
///     {
///         return range.isEnabled() && range.getUpperBound() <= 100;
///     }
///
///     void rangeChanged(vigil::ScalarMetric* metric, vigil::RangeKind kind) override
///     {
///         if (kind == vigil::RangeKind::Warning) // publish the new range, see below
///             metric->setWarningRange(metric->getWarningRange());
///         else
///             metric->setCriticalRange(metric->getCriticalRange());
///     }
/// };
///
/// PercentOnly handler; // outlives its registration
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "disk");
/// vigil::ScalarMetric* use = check->createScalarMetric("use");
/// use->setRangeChangeHandler(&handler);
/// // ... set values, update the check ...
/// use->clearRangeChangeHandler();
/// use->remove();
/// check->destroy();
/// \endcode
///
/// Purpose: accepts or refuses each change. A metric without a handler refuses every change.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, with the lock of
/// the callback registry held. Return quickly: the manager is waiting, and the library sends nothing
/// meanwhile. A handler may call the setters of the metric. It must not register, clear or remove anything;
/// the library refuses it with an error line in the log.
///
/// Ownership: the application owns it and calls ScalarMetric::clearRangeChangeHandler() before destroying it.
///
/// Failure: must not throw.
class VIGIL_GLOBAL_EXPORT RangeChangeHandler
{
public:
    virtual ~RangeChangeHandler() = default;

    /// The manager asks for a new warning or critical range of metric; return false to refuse. Nothing has
    /// changed yet. An accepted change may still fail elsewhere and never be applied.
    virtual bool acceptRangeChange(vigil::ScalarMetric* metric, RangeKind kind,
                                   const vigil::Range& range) = 0;

    /// The metric has its new range, and the next HealthCheck::update() judges by it. The library does not
    /// publish it: the service shows the manager's text until it reconnects, and then the text published
    /// last. To publish the new range, set it again here as in the example.
    virtual void rangeChanged(vigil::ScalarMetric* metric, RangeKind kind) = 0;
};

VIGIL_GLOBAL_END

#if !defined(VIGIL_NO_GLOBAL_NAMES)
namespace vigil {
using ::RangeChangeHandler;
using ::RangeKind;
} // namespace vigil
#endif

#endif
