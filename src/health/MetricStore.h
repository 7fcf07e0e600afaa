// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_METRICSTORE_H
#define VIGIL_HEALTH_METRICSTORE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/ThreadSafety.h"
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
/// Threads: metrics may be added and removed beside an evaluation on another thread, so that the handles of
/// <vigil/raii.h> need no lock around an operation that waits for a callback. One thread at a time evaluates,
/// and one adds or removes.
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

    /// Removes the entry under the name of metric, even if it is another metric's, and withdraws the rows
    /// under this name. Waits for an update in progress first: it would publish the rows again.
    void removeMetric(InternalMetric* metric);

    /// Removes all entries. The metrics and their rows stay.
    void clear();

    /// Evaluates all existing metrics in the order of their names.
    void evaluateAll();

    /// The outcome of the last evaluateAll().
    const std::vector<ResultEntry>& results() const { return m_results; }

    /// Held by the check from the evaluation to the end of the publishing.
    base::Mutex& updateMutex() { return m_updateMutex; }

private:
    std::vector<std::shared_ptr<InternalMetric>> metrics();
    void evaluate(InternalMetric& metric);
    void waitForUpdate();

    HealthCheckImpl* const m_owner;
    base::Mutex m_updateMutex;
    std::vector<ResultEntry> m_results;
    base::Mutex m_metricsMutex;
    std::map<std::string, std::weak_ptr<InternalMetric>> m_metrics VIGIL_GUARDED_BY(m_metricsMutex);
};

#endif
