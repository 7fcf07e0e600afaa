// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_WATCHEDMETRIC_H
#define VIGIL_HOST_HEALTH_WATCHEDMETRIC_H

#include <optional>
#include <string>

#include "Handles.h"
#include "Options.h"

/// A value of the host as a scalar metric; a manager may change its ranges if the handler agrees. The handler
/// must outlive it.
class WatchedMetric
{
public:
    WatchedMetric(vigil::HealthCheck& check, const std::string& name, const std::string& unit,
                  const Thresholds& thresholds, RangeChangeHandler& handler);
    ~WatchedMetric();
    WatchedMetric(const WatchedMetric&) = delete;
    WatchedMetric& operator=(const WatchedMetric&) = delete;

    /// Keeps the last value if there is no new one. Returns whether there was a new one.
    bool set(std::optional<double> value);

    /// Name, value and unit, for the console.
    std::string text() const;

private:
    ScalarHandle m_metric;
};

#endif
