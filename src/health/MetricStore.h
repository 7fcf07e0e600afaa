// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_METRICSTORE_H
#define VIGIL_HEALTH_METRICSTORE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "types/ResultEntry.h"

namespace vigil {
class HealthCheck;
}

class HealthCheckImpl;
class InternalMetric;
class RemoteMetricObserver;

/// The part of a health check that its metrics reach.
///
/// Purpose: knows the metrics by name and the results of the last update, and hands the metrics' news on to
/// the check's connector.
///
/// Threads: that of the health check; notifyChanged() and evaluateAll() also the client thread, when an
/// application publishes from inside a callback. No lock: the application keeps the threads apart.
///
/// Ownership: owned by the check alone; metrics hold weak references, so that they outlive it. Owns no
/// metric: a metric owns itself.
class MetricStore
{
public:
    explicit MetricStore(HealthCheckImpl* owner) : m_owner(owner) {}

    vigil::HealthCheck* getOwner() const;

    void notifyChanged(InternalMetric* metric);
    void registerObserver(RemoteMetricObserver* observer);
    void unregisterObserver(RemoteMetricObserver* observer);

    /// Enters metric under its name, in place of an earlier one.
    void addMetric(const std::string& name, const std::shared_ptr<InternalMetric>& metric);

    /// Takes away whatever goes by the name of metric, rows included.
    void removeMetric(InternalMetric* metric);

    /// Forgets all metrics. They and their rows stay.
    void clear();

    /// Evaluates all living metrics in the order of their names.
    void evaluateAll();

    /// The outcome of the last evaluateAll().
    const std::vector<ResultEntry>& results() const { return m_results; }

private:
    void evaluate(InternalMetric& metric);

    HealthCheckImpl* const m_owner;
    std::vector<ResultEntry> m_results;
    std::map<std::string, std::weak_ptr<InternalMetric>> m_metrics;
};

#endif
