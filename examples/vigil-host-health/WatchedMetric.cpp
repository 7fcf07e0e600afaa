// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "WatchedMetric.h"

#include <cmath>
#include <sstream>

WatchedMetric::WatchedMetric(vigil::HealthCheck& check, const std::string& name, const std::string& unit,
                             const Thresholds& thresholds, RangeChangeHandler& handler)
    : m_metric(check.createScalarMetric(name))
{
    m_metric->setUnit(unit);
    m_metric->setWarningRange(thresholds.warning);
    m_metric->setCriticalRange(thresholds.critical);
    m_metric->setRangeChangeHandler(&handler);
}

WatchedMetric::~WatchedMetric()
{
    m_metric->clearRangeChangeHandler();
}

bool WatchedMetric::set(std::optional<double> value)
{
    if (value)
        m_metric->setValue(std::round(*value * 100.0) / 100.0);
    return value.has_value();
}

std::string WatchedMetric::text() const
{
    std::ostringstream text;
    text << m_metric->getName() << ' ' << m_metric->getValue() << m_metric->getUnit();
    return text.str();
}
