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
/// Purpose: measured quantities. At every HealthCheck::update() the value is CRITICAL when it is outside the
/// critical range, else WARNING when it is outside the warning range, else OK. Both ranges are off at
/// creation and the value is 0. The text reads "NAME is VALUEUNIT." with six significant digits, behind "out
/// of critical range: " or "out of warning range: " when it is outside one. For NaN see Range::match().
///
/// Units: value and ranges share the unit of setUnit(), whatever it is ("%", " MB", …).
///
/// Threads: one application thread at a time, that of the health check; no locks. The RangeChangeHandler is
/// called on the library's client thread.
///
/// Ownership: created by HealthCheck::createScalarMetric(), ended by remove(). It outlives its check: then
/// the setters only store, and remove() still has to be called to release it.
///
/// Failure: nothing is reported. setRangeChangeHandler(), clearRangeChangeHandler() and remove() do nothing
/// when called from inside one of the library's callbacks, apart from an error line in the log.
class VIGIL_EXPORT ScalarMetric : public Metric
{
public:
    ScalarMetric() = default;
    ScalarMetric(const ScalarMetric&) = default;
    ScalarMetric& operator=(const ScalarMetric&) = default;

    /// Stores the value; it is published by the next HealthCheck::update().
    virtual void setValue(double value) = 0;
    virtual double getValue() const = 0;

    /// Stores and publishes the unit, UTF-8. It is printed without a blank before it; bring your own.
    virtual void setUnit(const std::string& unit) = 0;

    /// Store and publish a range; it is applied by the next HealthCheck::update().
    virtual void setWarningRange(const Range& range) = 0;
    virtual void setCriticalRange(const Range& range) = 0;

    /// Whether the value is also published as a row of the performance data table. On at creation.
    virtual void setPerformanceDataEnabled(bool enabled) = 0;

    /// Lets the manager change the ranges, with the consent of handler, which takes the place of an earlier
    /// one. Not owned; clear it before destroying it. With null every change is refused.
    virtual void setRangeChangeHandler(RangeChangeHandler* handler) = 0;

    /// From now on every change by the manager is refused. When it returns, no call of the handler is under
    /// way.
    virtual void clearRangeChangeHandler() = 0;

    /// The check that created this metric, or null when it has been destroyed.
    virtual HealthCheck* getHealthCheck() const = 0;

protected:
    virtual ~ScalarMetric() = default;
};

} // namespace vigil

#endif
