// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SNMP_SNMPCONNECTOR_H
#define VIGIL_SNMP_SNMPCONNECTOR_H

#include <memory>

#include <vigil/Connector.h>

#include "snmp/SnmpMetricResultTable.h"
#include "snmp/SnmpMetricTable.h"
#include "snmp/SnmpPerfDataTable.h"
#include "snmp/SnmpTableManager.h"

namespace vigil {
class HealthCheck;
}

class MetricStore;

/// Publishes one health check as rows of the five SNMP tables.
///
/// Purpose: fills the tables. The check's own row exists as long as the connector. Metric rows follow
/// addMetric() and removeMetric(); result rows follow updateResults(). The first management handler creates
/// the management row, and the row stays.
///
/// Threads: the thread of the health check; updateMetric() and updateResults() also the client thread if an
/// application publishes inside a callback.
///
/// Ownership: the health check owns its connector. The connector owns the tables of metrics, results and
/// performance data; it shares the other two while SnmpTableManager lives.
///
/// Failure: nothing is reported. After the library has stopped, operations skip the shared tables.
class SnmpConnector : public Connector
{
public:
    explicit SnmpConnector(vigil::HealthCheck* healthCheck);
    ~SnmpConnector() override;
    SnmpConnector(const SnmpConnector&) = delete;
    SnmpConnector& operator=(const SnmpConnector&) = delete;

    void updateResults(const std::vector<ResultEntry>& results) override;
    void addMetric(const std::string& name) override;
    void updateMetric(vigil::Metric& metric) override;
    void removeMetric(const std::string& name) override;
    void registerRemoteMetricObserver(RemoteMetricObserver* observer) override;
    void unregisterRemoteMetricObserver(RemoteMetricObserver* observer) override;
    void registerManagementHandler(ManagementHandler* handler) override;
    void unregisterManagementHandler() override;

private:
    void withdraw();
    void publishStatus();
    void publishResult(const ResultEntry& entry);

    vigil::HealthCheck* m_healthCheck;
    SnmpMetricTable m_metricTable;
    SnmpMetricResultTable m_metricResultTable;
    SnmpPerfDataTable m_perfDataTable;
    std::weak_ptr<SnmpTableManager> m_tableManager;
    const StringPair m_key;
};

/// The connector for a health check. store is for other kinds of connector; SnmpConnector does not need it.
std::unique_ptr<Connector> createConnector(vigil::HealthCheck* healthCheck,
                                           const std::shared_ptr<MetricStore>& store);

#endif
