// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_METRIC_H
#define VIGIL_METRIC_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

class Range;

/// One measured or reported quantity of a health check: the base of ScalarMetric and SimpleMetric.
///
/// Purpose: name, unit and ranges, the columns of the metric table.
///
/// Threads: used on the thread of the health check; no locks. A callback of the library, which runs on the
/// client thread, may call the getters of the metric it is about.
///
/// Ownership: HealthCheck creates metrics and remove() ends them; never delete one.
///
/// Failure: no operation reports an error; one that cannot act does nothing.
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

    /// The unit, UTF-8, printed directly after the value; empty if there is none.
    virtual std::string getUnit() const = 0;

    /// The ranges in force. A reference is valid until remove(). It keeps its value through the next 900
    /// changes at least: after a change, ask again.
    virtual const Range& getWarningRange() const = 0;
    virtual const Range& getCriticalRange() const = 0;

    /// Withdraws the rows of the metric and deletes it; the pointer is invalid afterwards. Rows are removed
    /// by name: a second metric of the same name loses its rows, too.
    virtual void remove() = 0;

protected:
    ~Metric() = default;
};

} // namespace vigil

#endif
