// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/HealthCheckImpl.h"

#include <vigil/Connector.h>

#include <new>

#include "client/CallbackRules.h"
#include "health/LiveChecks.h"
#include "health/ScalarMetricImpl.h"
#include "health/SimpleMetricImpl.h"
#include "platform/Platform.h"
#include "snmp/SnmpConnector.h"
#include "types/Summary.h"
#include "types/WorstStatus.h"

using vigil::HealthCheck;
using vigil::HealthStatus;
using vigil::Result;

HealthCheck* vigil::createHealthCheck(const std::string& firstKey, const std::string& secondKey)
{
    LiveChecks::add();
    try {
        return new HealthCheckImpl(firstKey, secondKey);
    } catch (const std::bad_alloc&) {
        LiveChecks::remove();
        return nullptr;
    } catch (...) {
        LiveChecks::remove();
        throw;
    }
}

HealthCheckImpl::HealthCheckImpl(const std::string& firstKey, const std::string& secondKey)
    : m_firstKey(firstKey),
      m_secondKey(secondKey),
      m_store(std::make_shared<MetricStore>(this)),
      m_connector(createConnector(this, m_store).release())
{}

/// The connector's destructor waits for a callback in progress. This callback may still publish through
/// m_connector, so the pointer must stay valid until the destructor returns; a unique_ptr may be null by
/// then.
HealthCheckImpl::~HealthCheckImpl()
{
    delete m_connector;
    LiveChecks::remove();
}

void HealthCheckImpl::destroy()
{
    if (m_origin.isInherited() || refuseInsideCallback("HealthCheck::destroy"))
        return;
    m_store->clear();
    delete this;
}

// --- Metrics

vigil::SimpleMetric* HealthCheckImpl::createSimpleMetric(const std::string& name)
{
    if (refuseInsideCallback("HealthCheck::createSimpleMetric"))
        return nullptr;
    return announce(SimpleMetricImpl::create(name, m_store));
}

vigil::ScalarMetric* HealthCheckImpl::createScalarMetric(const std::string& name)
{
    if (refuseInsideCallback("HealthCheck::createScalarMetric"))
        return nullptr;
    return announce(ScalarMetricImpl::create(name, m_store));
}

template <typename MetricImpl>
MetricImpl* HealthCheckImpl::announce(const std::shared_ptr<MetricImpl>& metric)
{
    InternalMetric& internal = *metric;
    const std::string name = internal.getName();
    m_connector->addMetric(name);
    m_store->addMetric(name, metric);
    m_connector->updateMetric(internal);
    metric->keep(metric);
    return metric.get();
}

// --- Management functions

void HealthCheckImpl::registerManagementHandler(ManagementHandler* handler)
{
    if (!refuseInsideCallback("HealthCheck::registerManagementHandler"))
        m_connector->registerManagementHandler(handler);
}

void HealthCheckImpl::unregisterManagementHandler()
{
    if (!refuseInsideCallback("HealthCheck::unregisterManagementHandler"))
        m_connector->unregisterManagementHandler();
}

// --- Results

void HealthCheckImpl::update()
{
    if (platform::isForkedChild())
        return;
    const base::MutexLock lock(m_store->updateMutex());
    m_store->evaluateAll();
    const std::vector<ResultEntry>& results = m_store->results();
    m_status = worstStatus(results);
    const Summary summary;
    m_summary = m_status == HealthStatus::Ok ? summary.summarizeOk(*this, results)
                                             : summary.summarizeProblems(*this, results);
    m_connector->updateResults(results);
}

void HealthCheckImpl::getResults(std::vector<Result>& out) const
{
    out.clear();
    for (const ResultEntry& entry : m_store->results())
        out.push_back(entry.result);
}
