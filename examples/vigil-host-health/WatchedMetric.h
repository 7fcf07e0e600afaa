// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_WATCHEDMETRIC_H
#define VIGIL_HOST_HEALTH_WATCHEDMETRIC_H

#include <vigil/raii.h>

#include <optional>
#include <string>

#include "Options.h"

/// A value of the host as a scalar metric. A manager may set any range with an upper bound; without one a
/// full machine would raise no alarm.
class WatchedMetric
{
public:
    WatchedMetric(vigil::CheckHandle& check, const std::string& name, const std::string& unit,
                  const Thresholds& thresholds);

    /// Without a value the metric is UNKNOWN: the last one may be wrong by now. Returns whether there is one.
    bool set(std::optional<double> value);

    /// Name, value and unit, for the console. The value is "unknown" until the first set().
    std::string text() const;

private:
    vigil::ScalarHandle m_metric;
    bool m_isKnown = false;
};

#endif
