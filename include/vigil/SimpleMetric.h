// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SIMPLEMETRIC_H
#define VIGIL_SIMPLEMETRIC_H

#include <string>

#include <vigil/Metric.h>
#include <vigil/Result.h>
#include <vigil/vigil_export.h>

namespace vigil {

class HealthCheck;

/// A status that the application sets itself, with a text.
///
/// Purpose: states that no threshold describes, such as the reachability of a database. It is UNKNOWN at
/// creation; unit and ranges stay empty. The text is made from a template, "{name} is {value}, {info}."
/// unless setTemplate() gives another: "{name}", "{value}" (the word for the status) and "{info}" are
/// replaced, in this order.
///
/// Threads: one application thread at a time, that of the health check; no locks.
///
/// Ownership: created by HealthCheck::createSimpleMetric(), ended by remove(). It outlives its check: then
/// the setters only store, and remove() still has to be called to release it.
///
/// Failure: nothing is reported. remove() does nothing when called from inside one of the library's
/// callbacks, apart from an error line in the log.
class VIGIL_EXPORT SimpleMetric : public Metric
{
public:
    SimpleMetric() = default;
    SimpleMetric(const SimpleMetric&) = default;
    SimpleMetric& operator=(const SimpleMetric&) = default;

    /// Stores the status; it is published by the next HealthCheck::update().
    virtual void setStatus(HealthStatus status) = 0;
    virtual HealthStatus getStatus() const = 0;

    /// Stores the info text, UTF-8; the next HealthCheck::update() shows it.
    virtual void setInfo(const std::string& info) = 0;

    /// Stores the message template, UTF-8; the next HealthCheck::update() uses it.
    virtual void setTemplate(const std::string& text) = 0;

    /// Whether the status number is also published as a row of the performance data table. Off at creation.
    virtual void setPerformanceDataEnabled(bool enabled) = 0;

    /// The check that created this metric, or null when it has been destroyed.
    virtual HealthCheck* getHealthCheck() const = 0;

protected:
    virtual ~SimpleMetric() = default;
};

} // namespace vigil

#endif
