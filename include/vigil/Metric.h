// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_METRIC_H
#define VIGIL_METRIC_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

class Range;

/// What all metrics have in common: one measured or reported quantity of a health check.
///
/// Purpose: the part of a metric that is published as a row of the metric table.
/// Threads: used on the thread that drives its health check; no locks. Inside a callback of the library
/// (which arrives on the library's client thread) the getters may be called for the metric that the callback
/// is about. Ownership: the library creates metrics, HealthCheck hands them out, remove() ends them. Never
/// deleted by the application. Failure: no operation reports an error; one that cannot act does nothing.
class VIGIL_EXPORT Metric
{
public:
    Metric() = default;
    Metric(const Metric&) = default;
    Metric(Metric&&) = default;
    Metric& operator=(const Metric&) = default;
    Metric& operator=(Metric&&) = default;

    /// The name given at creation, UTF-8.
    virtual std::string getName() const = 0;

    /// The unit as it is printed directly behind the value, UTF-8; empty when there is none.
    virtual std::string getUnit() const = 0;

    virtual const Range& getWarningRange() const = 0;
    virtual const Range& getCriticalRange() const = 0;

    /// Takes the metric and its rows away from the check and destroys it. The pointer is dead afterwards.
    /// Removal goes by name: after a second metric of this name was created, its rows go too.
    virtual void remove() = 0;

protected:
    ~Metric() = default;
};

} // namespace vigil

#endif
