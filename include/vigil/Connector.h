// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CONNECTOR_H
#define VIGIL_CONNECTOR_H

#include <string>
#include <vector>

#include <vigil/GlobalNames.h>
#include <vigil/ManagementHandler.h>

namespace vigil {
class Metric;
} // namespace vigil

VIGIL_GLOBAL_BEGIN

class RemoteMetricObserver; // internal to the library, as is ResultEntry
struct ResultEntry;

/// The publishing side of a health check.
///
/// Purpose: keeps the checks free of SNMP; the library's own connector writes the rows of the SNMP tables.
/// The class is part of the binary interface, but of no use to an application: a health check creates its own
/// connector and never hands it out, and there is no way to install another. ResultEntry and
/// RemoteMetricObserver are only declared here and their headers are not installed, so that an application
/// can neither read the results passed to updateResults() nor create an observer.
///
/// Threads: called on the thread of the health check; updateMetric() and updateResults() also on the client
/// thread if an application publishes inside a callback.
///
/// Ownership: the health check owns its connector. A connector does not own observers and handlers.
///
/// Failure: no operation reports an error.
class VIGIL_GLOBAL_EXPORT Connector
{
public:
    Connector();
    Connector(const Connector& other);
    Connector& operator=(const Connector& other);

    /// Publishes status and summary of the check, and the rows of its results.
    virtual void updateResults(const std::vector<ResultEntry>& results) = 0;

    /// Announces a metric's row; updateMetric() fills it.
    virtual void addMetric(const std::string& name) = 0;

    /// Publishes unit and ranges of an announced metric; does nothing for any other.
    virtual void updateMetric(vigil::Metric& metric) = 0;

    /// Withdraws all rows of the metric.
    virtual void removeMetric(const std::string& name) = 0;

    /// Make the ranges of the observer's metric writable for a manager, or read-only again.
    virtual void registerRemoteMetricObserver(RemoteMetricObserver* observer) = 0;
    virtual void unregisterRemoteMetricObserver(RemoteMetricObserver* observer) = 0;

    /// Publish the management row and route its triggers to handler, or stop routing them.
    virtual void registerManagementHandler(ManagementHandler* handler) = 0;
    virtual void unregisterManagementHandler() = 0;

    virtual ~Connector();
};

VIGIL_GLOBAL_END

#if !defined(VIGIL_NO_GLOBAL_NAMES)
namespace vigil {
using ::Connector;
} // namespace vigil
#endif

#endif
