// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/ScalarMetricImpl.h"

#include "base/DebugOutput.h"
#include "client/CallbackRules.h"

using vigil::HealthStatus;
using vigil::Range;
using vigil::Result;

std::shared_ptr<ScalarMetricImpl> ScalarMetricImpl::create(const std::string& name,
                                                           const std::shared_ptr<MetricStore>& store)
{
    return std::shared_ptr<ScalarMetricImpl>(new ScalarMetricImpl(name, store));
}

ScalarMetricImpl::ScalarMetricImpl(const std::string& name, const std::shared_ptr<MetricStore>& store)
    : m_store(store), m_name(QString::fromStdString(name))
{
    base::writeDebug(base::metricsCategory,
                     [](QDebug line) { line << "ScalarMetricImpl::ScalarMetricImpl Ctor\n"; });
}

void ScalarMetricImpl::remove()
{
    if (m_origin.isInherited() || refuseInsideCallback("ScalarMetric::remove"))
        return;
    if (const auto store = m_store.lock())
        store->removeMetric(this);
    const std::shared_ptr<ScalarMetricImpl> last = std::move(m_self); // the scope ends this object
}

// --- Published attributes

std::string ScalarMetricImpl::getName() const
{
    return m_name.toStdString();
}

std::string ScalarMetricImpl::getUnit() const
{
    const Lock lock(m_mutex);
    return m_unit.toStdString();
}

const Range& ScalarMetricImpl::getWarningRange() const
{
    const Lock lock(m_mutex);
    return m_warningRange.current();
}

const Range& ScalarMetricImpl::getCriticalRange() const
{
    const Lock lock(m_mutex);
    return m_criticalRange.current();
}

void ScalarMetricImpl::setUnit(const std::string& unit)
{
    const Lock lock(m_mutex);
    m_unit = QString::fromStdString(unit);
    publish();
}

void ScalarMetricImpl::setWarningRange(const Range& range)
{
    const Lock lock(m_mutex);
    m_warningRange.set(range);
    publish();
}

void ScalarMetricImpl::setCriticalRange(const Range& range)
{
    const Lock lock(m_mutex);
    m_criticalRange.set(range);
    publish();
}

void ScalarMetricImpl::publish()
{
    if (const auto store = m_store.lock())
        store->notifyChanged(this);
}

vigil::HealthCheck* ScalarMetricImpl::getHealthCheck() const
{
    const auto store = m_store.lock();
    return store ? store->getOwner() : nullptr;
}

// --- Evaluation

void ScalarMetricImpl::setValue(double value)
{
    const Lock lock(m_mutex);
    m_value = value;
    m_isUnknown = false;
}

void ScalarMetricImpl::setUnknown(const std::string& reason)
{
    const Lock lock(m_mutex);
    m_unknownReason = QString::fromStdString(reason);
    m_isUnknown = true;
}

double ScalarMetricImpl::getValue() const
{
    const Lock lock(m_mutex);
    return m_value;
}

void ScalarMetricImpl::setPerformanceDataEnabled(bool enabled)
{
    const Lock lock(m_mutex);
    m_perfDataEnabled = enabled;
}

bool ScalarMetricImpl::evaluate(Result& out)
{
    const Lock lock(m_mutex);
    if (m_isUnknown)
        out = Result(getName(), HealthStatus::Unknown, unknownMessage());
    else if (!m_criticalRange.current().match(m_value))
        out = Result(getName(), HealthStatus::Critical, "out of critical range: " + message());
    else if (!m_warningRange.current().match(m_value))
        out = Result(getName(), HealthStatus::Warning, "out of warning range: " + message());
    else
        out = Result(getName(), HealthStatus::Ok, message());
    return true;
}

std::string ScalarMetricImpl::message() const
{
    QString text = m_messageTemplate;
    text.replace(QLatin1String("{name}"), m_name);
    text.replace(QLatin1String("{value}"), QString::number(m_value, 'g', 6));
    text.replace(QLatin1String("{unit}"), m_unit);
    return text.toStdString();
}

std::string ScalarMetricImpl::unknownMessage() const
{
    return (m_name + QLatin1String(" is UNKNOWN, ") + m_unknownReason + QLatin1Char('.')).toStdString();
}

bool ScalarMetricImpl::getPerformanceData(PerformanceData& out)
{
    const Lock lock(m_mutex);
    if (!m_perfDataEnabled || m_isUnknown)
        return false;
    out.setLabel(getName());
    out.setValue(m_value);
    out.setUnit(getUnit());
    out.setWarningText(m_warningRange.currentText());
    out.setCriticalText(m_criticalRange.currentText());
    return true;
}

// --- The manager's changes

void ScalarMetricImpl::setRangeChangeHandler(RangeChangeHandler* handler)
{
    if (refuseInsideCallback("ScalarMetric::setRangeChangeHandler"))
        return;
    {
        const Lock lock(m_mutex);
        m_rangeHandler = handler;
    }
    if (const auto store = m_store.lock())
        store->registerObserver(this);
}

void ScalarMetricImpl::clearRangeChangeHandler()
{
    if (refuseInsideCallback("ScalarMetric::clearRangeChangeHandler"))
        return;
    {
        const Lock lock(m_mutex);
        m_rangeHandler = nullptr;
    }
    if (const auto store = m_store.lock())
        store->unregisterObserver(this);
}

RangeChangeHandler* ScalarMetricImpl::rangeHandler() const
{
    const Lock lock(m_mutex);
    return m_rangeHandler;
}

vigil::Metric& ScalarMetricImpl::getMetric()
{
    return static_cast<InternalMetric&>(*this);
}

bool ScalarMetricImpl::checkRangeChange(RangeKind kind, const Range& range)
{
    RangeChangeHandler* handler = rangeHandler();
    return handler && handler->acceptRangeChange(this, kind, range);
}

void ScalarMetricImpl::applyRange(RangeKind kind, const Range& range)
{
    const Lock lock(m_mutex);
    (kind == RangeKind::Warning ? m_warningRange : m_criticalRange).set(range);
}

void ScalarMetricImpl::onRangeChanged(RangeKind kind)
{
    if (RangeChangeHandler* handler = rangeHandler())
        handler->rangeChanged(this, kind);
}
