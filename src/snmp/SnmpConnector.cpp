// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpConnector.h"

#include <QString>

#include <vigil/HealthCheck.h>
#include <vigil/Metric.h>
#include <vigil/Range.h>

#include "base/DebugOutput.h"
#include "base/UntilMemory.h"
#include "client/VigilSnmp.h"
#include "snmp/ManagementCallbackAdapter.h"
#include "snmp/RangeCallbackAdapter.h"
#include "snmp/RemoteMetricObserver.h"
#include "types/ResultEntry.h"

using vigil::HealthCheck;
using vigil::Result;

std::unique_ptr<Connector> createConnector(HealthCheck* healthCheck, const std::shared_ptr<MetricStore>&)
{
    return std::make_unique<SnmpConnector>(healthCheck);
}

SnmpConnector::SnmpConnector(HealthCheck* healthCheck)
    : m_healthCheck(healthCheck),
      m_metricTable(healthCheck->getFirstKey(), healthCheck->getSecondKey()),
      m_metricResultTable(healthCheck->getFirstKey(), healthCheck->getSecondKey()),
      m_perfDataTable(healthCheck->getFirstKey(), healthCheck->getSecondKey()),
      m_tableManager(vigil::VigilSnmp::instance().tableManager()),
      m_key(healthCheck->getFirstKey(), healthCheck->getSecondKey())
{
    // A row that is published in part could not be withdrawn without memory. The first update publishes it
    // whole.
    base::untilMemory([this] { publishStatus(); });
}

/// The callbacks end first, since without memory the rows stay.
SnmpConnector::~SnmpConnector()
{
    SnmpConnector::unregisterManagementHandler();
    m_metricTable.removeAllRowCallbacks();
    base::untilMemory([this] { withdraw(); });
}

void SnmpConnector::withdraw()
{
    m_metricTable.removeAllRows();
    m_metricResultTable.removeAllRows();
    m_perfDataTable.removeAllRows();
    if (const auto shared = m_tableManager.lock()) {
        shared->healthCheckTable().removeRow(m_key);
        shared->mgmFuncTable().removeRow(m_key);
    }
}

// --- Results

void SnmpConnector::publishStatus()
{
    if (const auto shared = m_tableManager.lock()) {
        shared->healthCheckTable().setRow(m_key, static_cast<unsigned int>(m_healthCheck->getStatus()),
                                          m_healthCheck->getSummary());
    }
}

void SnmpConnector::updateResults(const std::vector<ResultEntry>& results)
{
    publishStatus();
    for (const ResultEntry& entry : results)
        publishResult(entry);
}

void SnmpConnector::publishResult(const ResultEntry& entry)
{
    const Result& result = entry.result;
    m_metricResultTable.setRow(result.getName(), static_cast<unsigned int>(result.getStatus()),
                               result.getSummary());
    if (!entry.perfData) {
        m_perfDataTable.removeRow(result.getName());
        return;
    }
    const PerformanceData& data = *entry.perfData;
    const std::string value =
        QStringLiteral("%1").arg(data.getValue(), 0, 'g', -1, QLatin1Char(' ')).toStdString();
    m_perfDataTable.setRow(result.getName(), data.getLabel(), value, data.getUnit(), data.getWarning(),
                           data.getCritical());
}

// --- Metrics

void SnmpConnector::addMetric(const std::string& name)
{
    // An earlier metric of this name may have a callback: deregister it before its row is replaced.
    m_metricTable.removeRowCallback(name);
    m_metricTable.createRow(name);
    m_metricTable.setIntColumn(name, SnmpMetricTable::remoteChangeIndex, 0);
}

void SnmpConnector::updateMetric(vigil::Metric& metric)
{
    m_metricTable.setRow(metric.getName(), metric.getUnit(), metric.getWarningRange().toString(),
                         metric.getCriticalRange().toString());
}

void SnmpConnector::removeMetric(const std::string& name)
{
    m_metricTable.removeRow(name);
    m_metricResultTable.removeRow(name);
    m_perfDataTable.removeRow(name);
}

void SnmpConnector::registerRemoteMetricObserver(RemoteMetricObserver* observer)
{
    const std::string name = observer->getMetric().getName();
    m_metricTable.setRowCallback(name, std::make_unique<RangeCallbackAdapter>(observer, &m_metricTable));
    m_metricTable.setIntColumn(name, SnmpMetricTable::remoteChangeIndex, 1);
    base::writeDebug(base::tablesCategory, [&](QDebug line) {
        line.noquote()
            << QStringLiteral(
                   "SnmpConnector::registerRemoteMetricObserver: Registering metric observer for %1.")
                   .arg(QString::fromStdString(name));
    });
}

void SnmpConnector::unregisterRemoteMetricObserver(RemoteMetricObserver* observer)
{
    const std::string name = observer->getMetric().getName();
    m_metricTable.setIntColumn(name, SnmpMetricTable::remoteChangeIndex, 0);
    m_metricTable.removeRowCallback(name);
    base::writeDebug(base::tablesCategory, [&](QDebug line) {
        line.noquote() << QStringLiteral(
                              "SnmpConnector::unregisterRemoteMetricObserver: Remove metric observer for %1.")
                              .arg(QString::fromStdString(name));
    });
}

// --- Management functions

void SnmpConnector::registerManagementHandler(ManagementHandler* handler)
{
    const auto shared = m_tableManager.lock();
    if (!shared)
        return;
    SnmpMgmFuncTable& table = shared->mgmFuncTable();
    table.setRow(m_key, 1, 1, 1, 1, std::string());
    table.setRowCallback(m_key, std::make_unique<ManagementCallbackAdapter>(handler, &table));
}

void SnmpConnector::unregisterManagementHandler()
{
    if (const auto shared = m_tableManager.lock())
        shared->mgmFuncTable().removeRowCallback(m_key);
}
