// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CONNECTOR_H
#define VIGIL_CONNECTOR_H

#include <string>
#include <vector>

#include <vigil/ManagementHandler.h>
#include <vigil/vigil_export.h>

namespace vigil {
class Metric;
} // namespace vigil

class RemoteMetricObserver;
struct ResultEntry;

/// What a health check publishes through.
///
/// Purpose: keeps the checks free of SNMP. The library's own connector writes the rows of the SNMP tables;
/// the class is exported so that tests and tools of the library's users can name it. Applications have no
/// occasion to call it.
///
/// Threads: called on the thread that drives the health check; updateMetric() and updateResults() also on the
/// library's client thread, when an application publishes from inside a callback.
///
/// Ownership: owned by its health check. Observers and handlers are not owned.
///
/// Failure: no operation reports an error.
class VIGIL_EXPORT Connector
{
public:
    Connector();
    Connector(const Connector& other);
    Connector& operator=(const Connector& other);

    /// Publishes status and summary of the check and the rows of its results.
    virtual void updateResults(const std::vector<ResultEntry>& results) = 0;

    /// Announces a metric's row; updateMetric() fills it.
    virtual void addMetric(const std::string& name) = 0;

    /// Publishes unit and ranges of a metric whose row was announced; otherwise does nothing.
    virtual void updateMetric(vigil::Metric& metric) = 0;

    /// Withdraws all rows of the metric.
    virtual void removeMetric(const std::string& name) = 0;

    /// Make the ranges of the observer's metric writable for the manager, or read-only again.
    virtual void registerRemoteMetricObserver(RemoteMetricObserver* observer) = 0;
    virtual void unregisterRemoteMetricObserver(RemoteMetricObserver* observer) = 0;

    /// Publish the management row and route its triggers to handler, or to nobody.
    virtual void registerManagementHandler(ManagementHandler* handler) = 0;
    virtual void unregisterManagementHandler() = 0;

    virtual ~Connector();
};

namespace vigil {
using ::Connector;
} // namespace vigil

#endif
