// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest-spi.h>

#include "testing/TestedApplication.h"

using testing::AllOf;
using testing::DescribeMatcher;
using testing::ExplainMatchResult;
using testing::Gt;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing::StringMatchResultListener;
using vigil::HealthStatus;
using vigil::test::FakeService;
using vigil::test::HasCheck;
using vigil::test::HasCriticalRange;
using vigil::test::HasMetric;
using vigil::test::HasNoChecks;
using vigil::test::HasNumber;
using vigil::test::HasStatus;
using vigil::test::HasSummary;
using vigil::test::HasText;
using vigil::test::HasUnit;
using vigil::test::HasValue;
using vigil::test::HasWarningRange;
using vigil::test::PublishedCell;
using vigil::test::PublishedCheck;
using vigil::test::PublishedMetric;
using vigil::test::PublishedTable;
using vigil::test::Publishes;

namespace {

PublishedCheck orders()
{
    PublishedMetric metric;
    metric.name = "pending";
    metric.status = HealthStatus::Warning;
    metric.summary = "pending is 4.25";
    metric.value = "4.25";
    metric.unit = "s";
    metric.warningRange = "~:4";
    PublishedCheck check;
    check.status = HealthStatus::Warning;
    check.summary = "all is slow";
    check.metrics = {metric};
    return check;
}

template <typename Value, typename Matcher>
std::string explanation(const Value& value, const Matcher& matcher)
{
    StringMatchResultListener listener;
    EXPECT_FALSE(ExplainMatchResult(matcher, value, &listener));
    return listener.str();
}

} // namespace

TEST(Matchers, JudgeACheck)
{
    EXPECT_THAT(orders(), HasStatus(HealthStatus::Warning));
    EXPECT_THAT(orders(), Not(HasStatus(HealthStatus::Ok)));
    EXPECT_THAT(orders(), HasSummary("all is slow"));
    EXPECT_THAT(orders(), HasSummary(HasSubstr("slow")));
    EXPECT_THAT(orders(), HasMetric("pending"));
    EXPECT_THAT(orders(), Not(HasMetric("other")));
}

TEST(Matchers, JudgeAMetric)
{
    EXPECT_THAT(orders(),
                HasMetric("pending", HasStatus(HealthStatus::Warning), HasSummary(StartsWith("pending")),
                          HasValue(4.25), HasUnit("s"), HasWarningRange("~:4"), HasCriticalRange("")));
    EXPECT_THAT(orders(), HasMetric("pending", HasValue(Gt(4.0))));
    EXPECT_THAT(orders(), Not(HasMetric("pending", HasValue(4.5))));
    EXPECT_THAT(orders(), Not(HasMetric("pending", HasUnit("ms"))));
}

TEST(Matchers, AMetricWithoutANumberHasNoValue)
{
    EXPECT_THAT(PublishedMetric(), Not(HasValue(0)));
}

TEST(Matchers, JudgeACell)
{
    PublishedCell number;
    number.number = 5;
    PublishedCell text;
    text.isText = true;
    text.text = "five";
    const PublishedTable table({{"1.1", number}, {"1.2", text}}, 1);
    EXPECT_THAT(table, AllOf(HasNumber("1.1", 5), HasText("1.2", "five"), HasNoChecks()));
    EXPECT_THAT(table, HasNumber("1.1", Gt(4)));
    EXPECT_THAT(table, Not(HasText("1.1", "")));
    EXPECT_THAT(table, Not(HasNumber("1.2", 0)));
    EXPECT_THAT(table, Not(HasNumber("1.3", 5)));
}

TEST(Matchers, SayWhatIsThere)
{
    EXPECT_EQ(explanation(PublishedTable(), HasCheck("shop", "orders")), "check shop/orders is not there");
    EXPECT_THAT(explanation(orders(), HasMetric("other")), HasSubstr("metric \"other\" is not there"));
    EXPECT_THAT(explanation(orders(), HasMetric("pending", HasStatus(HealthStatus::Ok))),
                HasSubstr("whose status is WARNING"));
    EXPECT_THAT(explanation(orders(), HasMetric("pending", HasValue(5))),
                HasSubstr("whose value is \"4.25\""));
}

TEST(Matchers, SayWhatTheyExpect)
{
    EXPECT_EQ(DescribeMatcher<const PublishedCheck&>(HasStatus(HealthStatus::Ok)), "has status OK");
    EXPECT_THAT(DescribeMatcher<const PublishedTable&>(HasCheck("shop", "orders", HasSummary("slow"))),
                AllOf(StartsWith("has a check shop/orders that "), HasSubstr("\"slow\"")));
    EXPECT_THAT(DescribeMatcher<const PublishedTable&>(Not(HasCheck("shop", "orders"))),
                StartsWith("has no check shop/orders"));
}

class FailedExpectation : public TestedApplication
{
};

TEST_F(FailedExpectation, ShowsTheTable)
{
    publish(42);
    ASSERT_TRUE(service.settle());
    service.setTimeout(std::chrono::milliseconds(1));
    EXPECT_NONFATAL_FAILURE(
        EXPECT_THAT(service, Publishes(HasCheck("shop", "orders", HasStatus(HealthStatus::Ok)))),
        "\nshop/orders           WARNING");
}

TEST_F(FailedExpectation, WaitsOnlyOnce)
{
    const auto matcher = Publishes(HasCheck("nothing", "like it"));
    service.setTimeout(std::chrono::milliseconds(1));
    EXPECT_FALSE(matcher.Matches(service));
    service.setTimeout(std::chrono::hours(1)); // longer than the time-out of the test
    EXPECT_NE(explanation(service, matcher), "");
}
