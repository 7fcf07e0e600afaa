// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "WatchedMetric.h"

#include <cmath>
#include <limits>
#include <sstream>

#include "Console.h"

using vigil::Range;
using vigil::RangeKind;

namespace {

bool hasUpperBound(const Range& range)
{
    return range.getUpperBound() < (std::numeric_limits<double>::max)();
}

std::string describe(RangeKind kind, const std::string& metric, const Range& range)
{
    const std::string word = kind == RangeKind::Warning ? "warning" : "critical";
    return word + " range of " + metric + " to \"" + range.toString() + "\"";
}

} // namespace

WatchedMetric::WatchedMetric(vigil::CheckHandle& check, const std::string& name, const std::string& unit,
                             const Thresholds& thresholds)
    : m_metric(check, name)
{
    m_metric.setUnit(unit);
    m_metric.setWarningRange(thresholds.warning);
    m_metric.setCriticalRange(thresholds.critical);
    const auto accept = [name](RangeKind kind, const Range& range) {
        const bool isAccepted = hasUpperBound(range);
        say("The manager asks to set the " + describe(kind, name, range) +
            (isAccepted ? ": accepted." : ": refused, it has no upper bound."));
        return isAccepted;
    };
    const auto changed = [name](RangeKind kind, const Range& range) {
        say("The manager has set the " + describe(kind, name, range) + ".");
    };
    m_metric.setRangeHandler(accept, changed);
}

bool WatchedMetric::set(std::optional<double> value)
{
    m_isKnown = value.has_value();
    if (value)
        m_metric.setValue(std::round(*value * 100.0) / 100.0);
    else
        m_metric.setUnknown("the value could not be read");
    return m_isKnown;
}

std::string WatchedMetric::text() const
{
    std::ostringstream text;
    text << m_metric.getName() << ' ';
    if (m_isKnown)
        text << m_metric.getValue() << m_metric.getUnit();
    else
        text << "unknown";
    return text.str();
}
