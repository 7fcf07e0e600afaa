// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/MetricStore.h"

#include <vigil/Connector.h>

#include "health/HealthCheckImpl.h"
#include "health/InternalMetric.h"

vigil::HealthCheck* MetricStore::getOwner() const
{
    return m_owner;
}

void MetricStore::notifyChanged(InternalMetric* metric)
{
    m_owner->connector().updateMetric(*metric);
}

void MetricStore::registerObserver(RemoteMetricObserver* observer)
{
    m_owner->connector().registerRemoteMetricObserver(observer);
}

void MetricStore::unregisterObserver(RemoteMetricObserver* observer)
{
    m_owner->connector().unregisterRemoteMetricObserver(observer);
}

void MetricStore::addMetric(const std::string& name, const std::shared_ptr<InternalMetric>& metric)
{
    m_metrics[name] = metric;
}

void MetricStore::removeMetric(InternalMetric* metric)
{
    const std::string name = metric->getName();
    m_owner->connector().removeMetric(name);
    m_metrics.erase(name);
}

void MetricStore::clear()
{
    m_metrics.clear();
}

void MetricStore::evaluateAll()
{
    m_results.clear();
    for (const auto& entry : m_metrics) {
        if (const std::shared_ptr<InternalMetric> metric = entry.second.lock())
            evaluate(*metric);
    }
}

void MetricStore::evaluate(InternalMetric& metric)
{
    ResultEntry entry;
    if (!metric.evaluate(entry.result))
        return;
    if (!metric.getPerformanceData(*entry.perfData))
        entry.perfData.reset();
    m_results.push_back(std::move(entry));
}
