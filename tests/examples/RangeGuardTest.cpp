// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <vigil/vigil.h>

#include <string>

#include "Handles.h"
#include "RangeGuard.h"
#include "support/EnvironmentVariable.h"
#include "support/LibraryLog.h"

using vigil::Range;
using vigil::RangeKind;

namespace {

Range rangeOf(const std::string& text)
{
    Range range;
    EXPECT_EQ(Range::fromString(text, range), 0) << text;
    return range;
}

class RangeGuardTest : public testing::Test
{
protected:
    bool accepts(const std::string& text)
    {
        return guard.acceptRangeChange(metric.get(), RangeKind::Warning, rangeOf(text));
    }

    support::LibraryLog log;
    support::EnvironmentVariable port{"VIGIL_SERVICE_PORT", "1"}; // no service listens there
    CheckHandle check{vigil::createHealthCheck("test", "guard")};
    ScalarHandle metric{check->createScalarMetric("metric")};
    RangeGuard guard;
};

} // namespace

TEST_F(RangeGuardTest, AcceptsRangesWithAnUpperBound)
{
    for (const char* text : {"10", "~:10", "10:20", "@10:20", "@10"})
        EXPECT_TRUE(accepts(text)) << text;
}

TEST_F(RangeGuardTest, RefusesRangesWithoutAnUpperBound)
{
    for (const char* text : {"10:", "~:", "@10:", "off", "", "inf", "nan"})
        EXPECT_FALSE(accepts(text)) << text;
}

TEST_F(RangeGuardTest, PublishingTheNewRangeKeepsIt)
{
    metric->setWarningRange(rangeOf("~:10"));
    metric->setCriticalRange(rangeOf("~:20"));
    guard.rangeChanged(metric.get(), RangeKind::Warning);
    guard.rangeChanged(metric.get(), RangeKind::Critical);
    EXPECT_EQ(metric->getWarningRange().toString(), "~:10");
    EXPECT_EQ(metric->getCriticalRange().toString(), "~:20");
}
