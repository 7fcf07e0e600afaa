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

/// The metrics of a health check by name, and the results of its last update.
///
/// Purpose: metrics reach their check through it; it forwards their changes to the check's connector.
///
/// Threads: the thread of the health check; notifyChanged() and evaluateAll() also the client thread if an
/// application publishes inside a callback. No lock: the application keeps the threads apart.
///
/// Ownership: the check owns it. Metrics own themselves and outlive it; they hold weak references to it.
class MetricStore
{
public:
    explicit MetricStore(HealthCheckImpl* owner) : m_owner(owner) {}

    vigil::HealthCheck* getOwner() const;

    void notifyChanged(InternalMetric* metric);
    void registerObserver(RemoteMetricObserver* observer);
    void unregisterObserver(RemoteMetricObserver* observer);

    /// Enters metric under its name; it replaces an earlier one.
    void addMetric(const std::string& name, const std::shared_ptr<InternalMetric>& metric);

    /// Withdraws the rows under the name of metric, and removes the entry under this name even if it is
    /// another metric's.
    void removeMetric(InternalMetric* metric);

    /// Removes all entries. The metrics and their rows stay.
    void clear();

    /// Evaluates all existing metrics in the order of their names.
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
