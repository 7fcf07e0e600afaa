// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_SIMPLEMETRICIMPL_H
#define VIGIL_HEALTH_SIMPLEMETRICIMPL_H

#include <QString>

#include <memory>

#include <vigil/Range.h>
#include <vigil/SimpleMetric.h>

#include "base/ForkOrigin.h"
#include "health/InternalMetric.h"
#include "health/MetricStore.h"

/// The implementation of vigil::SimpleMetric, created by a health check. Both ranges are one unset range, so
/// the row has the same columns as that of a scalar metric.
class SimpleMetricImpl : public InternalMetric, public vigil::SimpleMetric
{
public:
    static std::shared_ptr<SimpleMetricImpl> create(const std::string& name,
                                                    const std::shared_ptr<MetricStore>& store);

    /// Lets the metric own itself until remove().
    void keep(const std::shared_ptr<SimpleMetricImpl>& self) { m_self = self; }

    ~SimpleMetricImpl() override = default;
    SimpleMetricImpl(const SimpleMetricImpl&) = delete;
    SimpleMetricImpl& operator=(const SimpleMetricImpl&) = delete;

    std::string getName() const override { return m_name.toStdString(); }
    std::string getUnit() const override { return m_unit.toStdString(); }
    const vigil::Range& getWarningRange() const override { return m_range; }
    const vigil::Range& getCriticalRange() const override { return m_range; }
    void remove() override;

    bool evaluate(vigil::Result& out) override;
    bool getPerformanceData(PerformanceData& out) override;

    void setStatus(vigil::HealthStatus status) override;
    vigil::HealthStatus getStatus() const override { return m_status; }
    void setInfo(const std::string& info) override;
    void setTemplate(const std::string& text) override;
    void setPerformanceDataEnabled(bool enabled) override { m_perfDataEnabled = enabled; }
    vigil::HealthCheck* getHealthCheck() const override;

private:
    SimpleMetricImpl(const std::string& name, const std::shared_ptr<MetricStore>& store);

    void publish();

    const base::ForkOrigin m_origin;
    const std::weak_ptr<MetricStore> m_store;
    const QString m_name;
    vigil::HealthStatus m_status = vigil::HealthStatus::Unknown;
    QString m_info;
    QString m_messageTemplate;
    const QString m_unit;
    bool m_perfDataEnabled = false;
    const vigil::Range m_range;
    std::shared_ptr<SimpleMetricImpl> m_self; // the only owner until remove()
};

#endif
