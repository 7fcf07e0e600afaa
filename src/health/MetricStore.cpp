// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/MetricStore.h"

#include <vigil/Connector.h>

#include "health/HealthCheckImpl.h"
#include "health/InternalMetric.h"
#include "platform/Platform.h"

namespace {
constexpr int updateTimeoutMs = 5000;
}

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
    if (platform::isForkedChild())
        return; // a thread of the parent may have been changing the map
    const base::MutexLock lock(m_metricsMutex);
    m_metrics[name] = metric;
}

void MetricStore::removeMetric(InternalMetric* metric)
{
    if (platform::isForkedChild())
        return;
    const std::string name = metric->getName();
    {
        const base::MutexLock lock(m_metricsMutex);
        m_metrics.erase(name);
    }
    waitForUpdate();
    m_owner->connector().removeMetric(name);
}

/// Without the metrics' lock: an update takes it. An update inside a callback waits for no other thread, so
/// the caller, who needs the callback store's lock next, does not have to hold it now. The limit is for the
/// end of a process on Windows, where the updating thread may be gone.
void MetricStore::waitForUpdate()
{
    if (m_updateMutex.tryLock(updateTimeoutMs))
        m_updateMutex.unlock();
}

void MetricStore::clear()
{
    const base::MutexLock lock(m_metricsMutex);
    m_metrics.clear();
}

std::vector<std::shared_ptr<InternalMetric>> MetricStore::metrics()
{
    const base::MutexLock lock(m_metricsMutex);
    std::vector<std::shared_ptr<InternalMetric>> metrics;
    metrics.reserve(m_metrics.size());
    for (const auto& entry : m_metrics) {
        if (std::shared_ptr<InternalMetric> metric = entry.second.lock())
            metrics.push_back(std::move(metric));
    }
    return metrics;
}

void MetricStore::evaluateAll()
{
    m_results.clear();
    for (const auto& metric : metrics())
        evaluate(*metric);
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
