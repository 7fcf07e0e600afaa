// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_SCALARMETRICIMPL_H
#define VIGIL_HEALTH_SCALARMETRICIMPL_H

#include <QString>

#include <memory>
#include <mutex>

#include <vigil/Range.h>
#include <vigil/ScalarMetric.h>

#include "base/ForkOrigin.h"
#include "base/ThreadSafety.h"
#include "health/InternalMetric.h"
#include "health/MetricStore.h"
#include "health/RangeHistory.h"
#include "snmp/RemoteMetricObserver.h"

/// The implementation of vigil::ScalarMetric, created by a health check.
///
/// Threads: a lock guards the fields, because a manager's range may arrive on the client thread during an
/// evaluation. It is not held during calls of the application's handler.
class ScalarMetricImpl : public InternalMetric, public vigil::ScalarMetric, public RemoteMetricObserver
{
public:
    static std::shared_ptr<ScalarMetricImpl> create(const std::string& name,
                                                    const std::shared_ptr<MetricStore>& store);

    /// Lets the metric own itself until remove().
    void keep(const std::shared_ptr<ScalarMetricImpl>& self) { m_self = self; }

    ~ScalarMetricImpl() override = default;
    ScalarMetricImpl(const ScalarMetricImpl&) = delete;
    ScalarMetricImpl& operator=(const ScalarMetricImpl&) = delete;

    std::string getName() const override;
    std::string getUnit() const override;
    const vigil::Range& getWarningRange() const override;
    const vigil::Range& getCriticalRange() const override;
    void remove() override;

    bool evaluate(vigil::Result& out) override;
    bool getPerformanceData(PerformanceData& out) override;

    void setValue(double value) override;
    double getValue() const override;
    void setUnit(const std::string& unit) override;
    void setWarningRange(const vigil::Range& range) override;
    void setCriticalRange(const vigil::Range& range) override;
    void setPerformanceDataEnabled(bool enabled) override;
    void setRangeChangeHandler(RangeChangeHandler* handler) override;
    void clearRangeChangeHandler() override;
    vigil::HealthCheck* getHealthCheck() const override;

    /// UNKNOWN, with this reason and without performance data, until the next setValue().
    void setUnknown(const std::string& reason);

    vigil::Metric& getMetric() override;
    bool checkRangeChange(RangeKind kind, const vigil::Range& range) override;
    void applyRange(RangeKind kind, const vigil::Range& range) override;
    void onRangeChanged(RangeKind kind) override;

private:
    using Lock = std::lock_guard<base::RecursiveMutex>;

    ScalarMetricImpl(const std::string& name, const std::shared_ptr<MetricStore>& store);

    std::string message() const;
    std::string unknownMessage() const;
    void publish();
    RangeChangeHandler* rangeHandler() const;

    const base::ForkOrigin m_origin;
    const std::weak_ptr<MetricStore> m_store;
    mutable base::RecursiveMutex m_mutex; // recursive: publish() makes the connector call the getters
    RangeChangeHandler* m_rangeHandler = nullptr;
    const QString m_name;
    QString m_unit;
    double m_value = 0.0;
    bool m_isUnknown = false;
    QString m_unknownReason;
    RangeHistory m_warningRange;
    RangeHistory m_criticalRange;
    bool m_perfDataEnabled = true;
    const QString m_messageTemplate = QStringLiteral("{name} is {value}{unit}.");
    std::shared_ptr<ScalarMetricImpl> m_self; // the only owner until remove()
};

#endif
