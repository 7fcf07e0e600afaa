// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_HEALTHCHECKIMPL_H
#define VIGIL_HEALTH_HEALTHCHECKIMPL_H

#include <memory>

#include <vigil/HealthCheck.h>

#include "base/ForkOrigin.h"
#include "health/MetricStore.h"

class Connector;

/// The implementation of vigil::HealthCheck, created by createHealthCheck(). The last check of the process
/// stops the library.
class HealthCheckImpl : public vigil::HealthCheck
{
public:
    HealthCheckImpl(const std::string& firstKey, const std::string& secondKey);
    HealthCheckImpl(const HealthCheckImpl&) = delete;
    HealthCheckImpl& operator=(const HealthCheckImpl&) = delete;

    vigil::SimpleMetric* createSimpleMetric(const std::string& name) override;
    vigil::ScalarMetric* createScalarMetric(const std::string& name) override;
    std::string getFirstKey() const override { return m_firstKey; }
    std::string getSecondKey() const override { return m_secondKey; }
    void setDescription(const std::string& description) override { m_description = description; }
    std::string getDescription() const override { return m_description; }
    void registerManagementHandler(ManagementHandler* handler) override;
    void unregisterManagementHandler() override;
    void update() override;
    vigil::HealthStatus getStatus() const override { return m_status; }
    std::string getSummary() const override { return m_summary; }
    void getResults(std::vector<vigil::Result>& out) const override;
    void destroy() override;

    Connector& connector() { return *m_connector; }

protected:
    ~HealthCheckImpl() override;

private:
    template <typename MetricImpl>
    MetricImpl* announce(const std::shared_ptr<MetricImpl>& metric);

    const base::ForkOrigin m_origin;
    const std::string m_firstKey;
    const std::string m_secondKey;
    std::string m_description;
    vigil::HealthStatus m_status = vigil::HealthStatus::Unknown;
    std::string m_summary;
    std::shared_ptr<MetricStore> m_store;
    Connector* const m_connector; // owned; see the destructor
};

#endif
