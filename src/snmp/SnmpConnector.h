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
/// Purpose: decides what goes into which table, and when. The check's own row exists as long as the
/// connector; metric rows follow addMetric() and removeMetric(), result rows follow updateResults(), the
/// management row comes with a handler and stays.
///
/// Threads: the thread that drives the health check; updateMetric() and updateResults() also on the client
/// thread, when an application republishes from inside a callback.
///
/// Ownership: owned by its health check, which it only points to. Owns the tables of metrics, results and
/// performance data; shares the other two while their manager lives.
///
/// Failure: nothing is reported. Without the shared tables their part of an operation is left out.
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
    void publishStatus();
    void publishResult(const ResultEntry& entry);

    vigil::HealthCheck* m_healthCheck;
    SnmpMetricTable m_metricTable;
    SnmpMetricResultTable m_metricResultTable;
    SnmpPerfDataTable m_perfDataTable;
    std::weak_ptr<SnmpTableManager> m_tableManager;
    const StringPair m_key;
};

/// The connector for a health check. Other kinds of connector may want the check's metric store; this one
/// does not.
std::unique_ptr<Connector> createConnector(vigil::HealthCheck* healthCheck,
                                           const std::shared_ptr<MetricStore>& store);

#endif
