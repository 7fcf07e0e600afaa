// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <vigil/testing/FakeService.h>
#include <vigil/testing/Matchers.h>

#include <string>

#include "WatchedMetric.h"
#include "support/LibraryLog.h"

using vigil::HealthStatus;
using vigil::test::HasCheck;
using vigil::test::HasMetric;
using vigil::test::HasStatus;
using vigil::test::HasWarningRange;
using vigil::test::SetResult;

namespace {

class WatchedMetricTest : public testing::Test
{
protected:
    SetResult set(const std::string& range)
    {
        service.settle(); // a manager can set only a published range
        return service.setWarningRange("test", "host", "load", range);
    }

    support::LibraryLog log;
    vigil::test::FakeService service;
    vigil::CheckHandle check{"test", "host"};
    WatchedMetric metric{
        check, "load", "%", {vigil::Range::CreateThresholdAbove(5), vigil::Range::CreateNoLimit()}};
};

} // namespace

TEST_F(WatchedMetricTest, AManagerMaySetARangeWithAnUpperBound)
{
    for (const char* range : {"10", "~:10", "10:20", "@10:20", "@10"}) {
        EXPECT_EQ(set(range), SetResult::Accepted) << range;
        EXPECT_THAT(service.published(), HasCheck("test", "host", HasMetric("load", HasWarningRange(range))));
    }
}

TEST_F(WatchedMetricTest, AManagerMaySetNoRangeWithoutAnUpperBound)
{
    for (const char* range : {"10:", "~:", "@10:", "off", "", "inf", "nan"})
        EXPECT_EQ(set(range), SetResult::Refused) << range;
    EXPECT_THAT(service.published(), HasCheck("test", "host", HasMetric("load", HasWarningRange("~:5"))));
}

TEST_F(WatchedMetricTest, IsUnknownWhileThereIsNoValue)
{
    EXPECT_TRUE(metric.set(4.346));
    EXPECT_EQ(metric.text(), "load 4.35%");

    EXPECT_FALSE(metric.set(std::nullopt));
    check.update();
    EXPECT_EQ(metric.text(), "load unknown");
    EXPECT_THAT(service.published(), HasCheck("test", "host", HasStatus(HealthStatus::Unknown),
                                              HasMetric("load", HasStatus(HealthStatus::Unknown))));

    EXPECT_TRUE(metric.set(3));
    check.update();
    EXPECT_THAT(service.published(), HasCheck("test", "host", HasStatus(HealthStatus::Ok)));
}
