// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTHCHECK_H
#define VIGIL_HEALTHCHECK_H

#include <string>
#include <vector>

#include <vigil/ManagementHandler.h>
#include <vigil/Result.h>
#include <vigil/vigil_export.h>

namespace vigil {

class ScalarMetric;
class SimpleMetric;

/// One aspect of the application's health, judged by its metrics.
///
/// Purpose: collects metrics; update() evaluates them all, takes the worst status (OK < UNKNOWN < WARNING <
/// CRITICAL) and publishes everything as rows of the SNMP tables. Until the first update() the check is
/// UNKNOWN with an empty summary.
///
/// The two keys identify the check for the manager, and they and the metric's name are part of the row's
/// object identifier, one arc per byte. An identifier has at most 128 arcs: first key, second key and metric
/// name may have about 110 bytes together, or the row cannot be seen by a manager. Keep them ASCII: the arcs
/// of bytes from 0x80 up are sign-extended (4294967168 to 4294967295), and no manager turns those back into
/// text.
///
/// Threads: createHealthCheck() and all operations belong to one application thread; no locks. Checks may be
/// driven from several threads when the application sees to it that only one is inside the library's check
/// and metric operations at a time. Handlers are called on the library's client thread.
///
/// Ownership: created by createHealthCheck(), ended by destroy(); never deleted by the application. Metrics
/// outlive the check unless removed. The first check of the process starts the library's threads, the last
/// one stops them.
///
/// Failure: nothing is reported, and nothing blocks on the network: without an SNMP service the values are
/// kept and published when it appears. createSimpleMetric(), createScalarMetric(),
/// registerManagementHandler(), unregisterManagementHandler() and destroy() do nothing when called from
/// inside one of the library's callbacks, apart from an error line in the log.
class VIGIL_EXPORT HealthCheck
{
public:
    HealthCheck();
    HealthCheck(const HealthCheck& other);
    HealthCheck& operator=(const HealthCheck& other);

    /// Create a metric and announce its row. The name is UTF-8. When it is taken the check sees only the
    /// newer metric, and a range handler of the older one is asked no more. Null when called from inside one
    /// of the library's callbacks.
    virtual SimpleMetric* createSimpleMetric(const std::string& name) = 0;
    virtual ScalarMetric* createScalarMetric(const std::string& name) = 0;

    /// The arguments of createHealthCheck(), UTF-8.
    virtual std::string getFirstKey() const = 0;
    virtual std::string getSecondKey() const = 0;

    /// The text that the summary begins with, UTF-8; shown from the next update() on.
    virtual void setDescription(const std::string& description) = 0;
    virtual std::string getDescription() const = 0;

    /// Publishes the management row and routes the manager's triggers to handler, in place of an earlier one.
    /// It is not owned and must be unregistered before it is destroyed. With null the triggers do nothing.
    virtual void registerManagementHandler(ManagementHandler* handler) = 0;

    /// When it returns, no call of the handler is under way and none will come. The row stays.
    virtual void unregisterManagementHandler() = 0;

    /// Evaluates all metrics in the order of their names and publishes the outcome. Nothing is published
    /// periodically; call it as often as the tables are to be refreshed.
    virtual void update() = 0;

    /// Status and summary of the last update().
    virtual HealthStatus getStatus() const = 0;
    virtual std::string getSummary() const = 0;

    /// Replaces the contents of out by the results of the last update(), in the order of the metrics' names.
    virtual void getResults(std::vector<Result>& out) const = 0;

    /// Withdraws all rows of the check and ends it; the pointer is dead afterwards.
    virtual void destroy() = 0;

protected:
    virtual ~HealthCheck();
};

/// Creates a health check, and with the first one of the process starts the library. Returns null when memory
/// runs out. The keys are UTF-8. Do not give two checks the same keys: they would share their rows, and the
/// first one to be destroyed takes them away from the other, its management handler included.
VIGIL_EXPORT HealthCheck* createHealthCheck(const std::string& firstKey, const std::string& secondKey);

} // namespace vigil

#endif
