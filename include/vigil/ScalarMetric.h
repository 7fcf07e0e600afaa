// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SCALARMETRIC_H
#define VIGIL_SCALARMETRIC_H

#include <string>

#include <vigil/Metric.h>
#include <vigil/Range.h>
#include <vigil/RangeChangeHandler.h>
#include <vigil/vigil_export.h>

namespace vigil {

class HealthCheck;

/// A number with a unit, judged against a warning and a critical range.
///
/// \code
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "orders");
/// vigil::ScalarMetric* pending = check->createScalarMetric("pending");
/// pending->setUnit(" orders");
/// pending->setWarningRange(vigil::Range::CreateThresholdAbove(100));
/// pending->setCriticalRange(vigil::Range::CreateThresholdAbove(500));
///
/// pending->setValue(120);
/// check->update(); // WARNING, "out of warning range: pending is 120 orders."
///
/// pending->remove();
/// check->destroy();
/// \endcode
///
/// Purpose: measured quantities. HealthCheck::update() makes the metric CRITICAL if the value is outside the
/// critical range, else WARNING if it is outside the warning range, else OK. A new metric has the value 0 and
/// both ranges off. For NaN see Range::match().
///
/// Units: value and ranges share the unit of setUnit(). The text shows six significant digits.
///
/// Threads: used on the thread of the health check. The RangeChangeHandler is called on the library's client
/// thread and may call the getters and setters of its metric.
///
/// Ownership: HealthCheck::createScalarMetric() creates it and remove() ends it. It outlives its check: then
/// the setters only store, and the application still calls remove() to release it.
///
/// Failure: no operation reports an error. Inside a callback of the library, setRangeChangeHandler(),
/// clearRangeChangeHandler() and remove() only write an error line to the log.
class VIGIL_EXPORT ScalarMetric : public Metric
{
public:
    ScalarMetric() = default;
    ScalarMetric(const ScalarMetric&) = default;
    ScalarMetric& operator=(const ScalarMetric&) = default;

    /// Stores the value. The next HealthCheck::update() publishes it.
    virtual void setValue(double value) = 0;
    virtual double getValue() const = 0;

    /// Stores and publishes the unit, UTF-8. It follows the value directly: begin it with a blank if you want
    /// one.
    virtual void setUnit(const std::string& unit) = 0;

    /// Store and publish a range. The next HealthCheck::update() judges by it. Each different range takes
    /// about 100 bytes until remove(), because references to earlier ones stay valid.
    virtual void setWarningRange(const Range& range) = 0;
    virtual void setCriticalRange(const Range& range) = 0;

    /// Whether the value also has a row in the performance data table. On at creation.
    virtual void setPerformanceDataEnabled(bool enabled) = 0;

    /// Lets the manager change the ranges if handler agrees; it replaces an earlier one. The metric does not
    /// own it: clear it before destroying it. With null every change is refused.
    virtual void setRangeChangeHandler(RangeChangeHandler* handler) = 0;

    /// Refuses every change from now on. Waits for a call in progress; afterwards the handler is never called
    /// again. Handlers belong to the name: this also switches off the handler of another metric with the same
    /// name in the same check.
    virtual void clearRangeChangeHandler() = 0;

    /// The check of this metric, or null if it has been destroyed.
    virtual HealthCheck* getHealthCheck() const = 0;

protected:
    virtual ~ScalarMetric() = default;
};

} // namespace vigil

#endif
