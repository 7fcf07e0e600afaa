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

/// A status and a text, both set by the application.
///
/// \code
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "database");
/// vigil::SimpleMetric* server = check->createSimpleMetric("server");
///
/// server->setStatus(vigil::HealthStatus::Critical);
/// server->setInfo("no reply for 30 s");
/// check->update(); // CRITICAL, "server is CRITICAL, no reply for 30 s."
///
/// server->remove();
/// check->destroy();
/// \endcode
///
/// Purpose: states without a threshold, such as the reachability of a database. A new metric is UNKNOWN; unit
/// and ranges stay empty. The text comes from a template, by default "{name} is {value}, {info}.". The
/// library replaces "{name}", then "{value}" with the word for the status, then "{info}".
///
/// Threads: used on the thread of the health check; no locks.
///
/// Ownership: HealthCheck::createSimpleMetric() creates it and remove() ends it. It outlives its check: then
/// the setters only store, and the application still calls remove() to release it.
///
/// Failure: no operation reports an error. Inside a callback of the library, remove() only writes an error
/// line to the log.
class VIGIL_EXPORT SimpleMetric : public Metric
{
public:
    SimpleMetric() = default;
    SimpleMetric(const SimpleMetric&) = default;
    SimpleMetric& operator=(const SimpleMetric&) = default;

    /// Stores the status. The next HealthCheck::update() publishes it. Any other number becomes Unknown.
    virtual void setStatus(HealthStatus status) = 0;
    virtual HealthStatus getStatus() const = 0;

    /// Stores the info text, UTF-8. The next HealthCheck::update() publishes it.
    virtual void setInfo(const std::string& info) = 0;

    /// Stores the template of the text, UTF-8. The next HealthCheck::update() uses it.
    virtual void setTemplate(const std::string& text) = 0;

    /// Whether the number of the status also has a row in the performance data table. Off at creation.
    virtual void setPerformanceDataEnabled(bool enabled) = 0;

    /// The check of this metric, or null if it has been destroyed.
    virtual HealthCheck* getHealthCheck() const = 0;

protected:
    virtual ~SimpleMetric() = default;
};

} // namespace vigil

#endif
