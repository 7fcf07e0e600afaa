// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/TestedApplication.h"

using vigil::test::HasCheck;
using vigil::test::HasMetric;
using vigil::test::HasNoChecks;
using vigil::test::HasValue;
using vigil::test::Publishes;

namespace {

auto hasPending(double value)
{
    return HasCheck("shop", "orders", HasMetric("pending", HasValue(value)));
}

} // namespace

class FakeServiceFaults : public TestedApplication
{
};

TEST_F(FakeServiceFaults, AStalledServiceShowsNothingNew)
{
    publish(1);
    EXPECT_THAT(service.published(), hasPending(1));
    service.stall();
    publish(2);
    const auto before = service.timeout();
    service.setTimeout(std::chrono::milliseconds(50));
    EXPECT_FALSE(service.settle());
    EXPECT_THAT(service.snapshot(), hasPending(1));
    service.resume();
    service.setTimeout(before);
    EXPECT_THAT(service.published(), hasPending(2));
}

TEST_F(FakeServiceFaults, ABrokenConnectionTakesTheTableWithIt)
{
    publish(1);
    EXPECT_THAT(service.published(), hasPending(1));
    service.goAway();
    EXPECT_EQ(service.connections(), 0);
    EXPECT_THAT(service.snapshot(), HasNoChecks());
}

TEST_F(FakeServiceFaults, TheLibraryReturnsToAReturningService)
{
    ASSERT_TRUE(service.waitForConnection());
    service.goAway();
    publish(5);
    service.comeBack();
    EXPECT_THAT(service, Publishes(hasPending(5)));
    EXPECT_EQ(service.connectionsSoFar(), 2);
}

TEST_F(FakeServiceFaults, AServiceThatIsAwayOrBackStaysSo)
{
    service.goAway();
    EXPECT_NO_THROW(service.goAway());
    EXPECT_EQ(service.connections(), 0);
    service.comeBack();
    EXPECT_NO_THROW(service.comeBack());
    EXPECT_TRUE(service.waitForConnection());
}

TEST_F(FakeServiceFaults, TheLibraryReplaysAfterABreak)
{
    publish(7);
    EXPECT_THAT(service.published(), hasPending(7));
    service.breakConnections();
    EXPECT_THAT(service, Publishes(hasPending(7)));
}
