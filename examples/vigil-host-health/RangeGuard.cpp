// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "RangeGuard.h"

#include <limits>
#include <string>

#include "Console.h"

using vigil::Range;
using vigil::RangeKind;
using vigil::ScalarMetric;

namespace {

bool hasUpperBound(const Range& range)
{
    return range.getUpperBound() < (std::numeric_limits<double>::max)();
}

std::string describe(RangeKind kind, const ScalarMetric& metric, const Range& range)
{
    const std::string word = kind == RangeKind::Warning ? "warning" : "critical";
    return word + " range of " + metric.getName() + " to \"" + range.toString() + "\"";
}

} // namespace

bool RangeGuard::acceptRangeChange(ScalarMetric* metric, RangeKind kind, const Range& range)
{
    const bool isAccepted = hasUpperBound(range);
    say("The manager asks to set the " + describe(kind, *metric, range) +
        (isAccepted ? ": accepted." : ": refused, it has no upper bound."));
    return isAccepted;
}

void RangeGuard::rangeChanged(ScalarMetric* metric, RangeKind kind)
{
    const bool isWarning = kind == RangeKind::Warning;
    const Range range = isWarning ? metric->getWarningRange() : metric->getCriticalRange();
    if (isWarning)
        metric->setWarningRange(range);
    else
        metric->setCriticalRange(range);
    say("The manager has set the " + describe(kind, *metric, range) + ".");
}
