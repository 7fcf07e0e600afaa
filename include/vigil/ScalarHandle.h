// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SCALARHANDLE_H
#define VIGIL_SCALARHANDLE_H

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include <vigil/CheckHandle.h>
#include <vigil/Range.h>
#include <vigil/RangeChangeHandler.h>
#include <vigil/ScalarMetric.h>
#include <vigil/detail/HandleSupport.h>
#include <vigil/detail/OwnedMetric.h>

namespace vigil {

/// Owns a scalar metric: the constructor creates it, the destructor removes it and its rows.
///
/// \code
/// vigil::CheckHandle check("shop", "disk");
/// vigil::ScalarHandle use(check, "use");
/// use.setUnit("%");
/// use.setWarningRange(vigil::Range::CreateThresholdAbove(80));
/// use.setRangeHandler([](vigil::RangeKind, const vigil::Range& range) {
///     return range.isEnabled() && range.getUpperBound() <= 100; // else the manager's change is refused
/// });
///
/// use.setValue(85);
/// check.update(); // WARNING, "out of warning range: use is 85%."
/// use.setUnknown("the disk does not answer");
/// check.update(); // UNKNOWN, "use is UNKNOWN, the disk does not answer."
/// \endcode
///
/// Purpose: see ScalarMetric for the metric itself.
///
/// Threads: as for CheckHandle. Functions run on the library's client thread, while a manager waits.
///
/// Ownership: a metric may outlive its check. Its setters then do nothing.
///
/// Failure: operations throw std::logic_error on an empty handle. Creating a metric and changing its range
/// handler do so inside a callback, too. The constructor throws std::invalid_argument if another handle of
/// this check has a metric of this name. If memory runs out, an operation throws std::bad_alloc with a part
/// of its work done: repeat it. The destructor throws nothing. It waits up to a second for memory, and then
/// leaves the metric until the library stops.
class ScalarHandle : public detail::Handle<detail::OwnedScalar>
{
public:
    /// Whether a manager may set this range; true accepts. Nothing has changed yet.
    using Accept = std::function<bool(RangeKind kind, const Range& range)>;

    /// The metric has its new range, and the library has published it.
    using Changed = std::function<void(RangeKind kind, const Range& range)>;

    ScalarHandle() noexcept = default;

    /// Creates a metric of check. The name is UTF-8.
    ScalarHandle(CheckHandle& check, const std::string& name) : Handle(create(check, name)) {}

    std::string getName() const
    {
        return content().get([](ScalarMetric& metric) { return metric.getName(); });
    }

    void setValue(double value)
    {
        content().set([=](ScalarMetric& metric) { metric.setValue(value); });
    }

    double getValue() const
    {
        return content().get([](ScalarMetric& metric) { return metric.getValue(); });
    }

    /// Makes the metric UNKNOWN at the next update, until setValue(). The reason is UTF-8 and becomes a part
    /// of its text: "NAME is UNKNOWN, REASON.".
    void setUnknown(const std::string& reason)
    {
        content().set([&](ScalarMetric& metric) { vigil_cxx_set_unknown(&metric, reason.c_str()); });
    }

    void setUnit(const std::string& unit)
    {
        content().set([&](ScalarMetric& metric) { metric.setUnit(unit); });
    }

    std::string getUnit() const
    {
        return content().get([](ScalarMetric& metric) { return metric.getUnit(); });
    }

    void setWarningRange(const Range& range)
    {
        content().set([&](ScalarMetric& metric) { metric.setWarningRange(range); });
    }

    Range getWarningRange() const
    {
        return content().get([](ScalarMetric& metric) -> Range { return metric.getWarningRange(); });
    }

    void setCriticalRange(const Range& range)
    {
        content().set([&](ScalarMetric& metric) { metric.setCriticalRange(range); });
    }

    Range getCriticalRange() const
    {
        return content().get([](ScalarMetric& metric) -> Range { return metric.getCriticalRange(); });
    }

    void setPerformanceDataEnabled(bool enabled)
    {
        content().set([=](ScalarMetric& metric) { metric.setPerformanceDataEnabled(enabled); });
    }

    /// Lets managers change the ranges accept agrees to; changed may be empty. Replaces earlier functions and
    /// waits for a call in progress.
    void setRangeHandler(Accept accept, Changed changed = nullptr)
    {
        content().setRangeHandler(std::move(accept), std::move(changed));
    }

    /// Refuses every change from now on. Waits for a call in progress.
    void clearRangeHandler() { content().clearRangeHandler(); }

    /// For calls of the library itself. Valid until the handle ends its metric; the check's lock is not held.
    /// Do not remove it, and set no handler through it.
    ScalarMetric* get() const { return content().metric(); }

private:
    friend class Updater;

    static std::shared_ptr<detail::OwnedScalar> create(CheckHandle& check, const std::string& name)
    {
        return detail::createMetric<detail::OwnedScalar>(
            check.shared(), name, [&](HealthCheck& owner) { return owner.createScalarMetric(name); });
    }
};

} // namespace vigil

#endif
