// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/SimpleMetricImpl.h"

#include "client/CallbackRules.h"

using vigil::HealthStatus;
using vigil::Result;

std::shared_ptr<SimpleMetricImpl> SimpleMetricImpl::create(const std::string& name,
                                                           const std::shared_ptr<MetricStore>& store)
{
    return std::shared_ptr<SimpleMetricImpl>(new SimpleMetricImpl(name, store));
}

SimpleMetricImpl::SimpleMetricImpl(const std::string& name, const std::shared_ptr<MetricStore>& store)
    : m_store(store), m_name(QString::fromStdString(name))
{
    SimpleMetricImpl::setTemplate("{name} is {value}, {info}.");
}

void SimpleMetricImpl::remove()
{
    if (m_origin.isInherited() || refuseInsideCallback("SimpleMetric::remove"))
        return;
    if (const auto store = m_store.lock())
        store->removeMetric(this);
    const std::shared_ptr<SimpleMetricImpl> last = std::move(m_self); // the scope ends this object
}

/// A number converted to a status may be none. The service would refuse it and go on showing the last one.
void SimpleMetricImpl::setStatus(HealthStatus status)
{
    const bool isStatus = status >= HealthStatus::Ok && status <= HealthStatus::Unknown;
    m_status = isStatus ? status : HealthStatus::Unknown;
}

void SimpleMetricImpl::setInfo(const std::string& info)
{
    m_info = QString::fromStdString(info);
    publish();
}

void SimpleMetricImpl::setTemplate(const std::string& text)
{
    m_messageTemplate = QString::fromStdString(text);
    publish();
}

void SimpleMetricImpl::publish()
{
    if (const auto store = m_store.lock())
        store->notifyChanged(this);
}

vigil::HealthCheck* SimpleMetricImpl::getHealthCheck() const
{
    const auto store = m_store.lock();
    return store ? store->getOwner() : nullptr;
}

bool SimpleMetricImpl::evaluate(Result& out)
{
    QString text = m_messageTemplate;
    text.replace(QLatin1String("{name}"), m_name);
    text.replace(QLatin1String("{value}"), QString::fromStdString(out.getStatusString(m_status)));
    text.replace(QLatin1String("{info}"), m_info);
    out = Result(getName(), m_status, text.toStdString());
    return true;
}

bool SimpleMetricImpl::getPerformanceData(PerformanceData& out)
{
    if (!m_perfDataEnabled)
        return false;
    out.setLabel(getName());
    out.setValue(static_cast<double>(m_status));
    out.setUnit(getUnit());
    return true;
}
