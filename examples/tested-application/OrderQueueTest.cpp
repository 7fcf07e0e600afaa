// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// What managers see of an OrderQueue, and what they may do with it. A fake service takes the place of
// vigil-agent; nothing else of this machine is used.

#include "OrderQueue.h"

#include <gmock/gmock.h>
#include <vigil/testing/FakeService.h>
#include <vigil/testing/Matchers.h>

using vigil::HealthStatus;
using vigil::test::HasCheck;
using vigil::test::HasMetric;
using vigil::test::HasNoChecks;
using vigil::test::HasStatus;
using vigil::test::HasUnit;
using vigil::test::HasValue;
using vigil::test::HasWarningRange;
using vigil::test::Publishes;
using vigil::test::SetResult;

class OrderQueueTest : public testing::Test
{
protected:
    vigil::test::FakeService service; // first: the library looks for it when the queue makes its check
    OrderQueue queue;
};

TEST_F(OrderQueueTest, AnEmptyQueueIsHealthy)
{
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(HealthStatus::Ok),
                                              HasMetric("length", HasValue(0), HasUnit("orders"))));
}

TEST_F(OrderQueueTest, ALongQueueIsAWarningUntilItIsTaken)
{
    for (const char* order : {"bread", "butter", "jam"})
        queue.add(order);
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(HealthStatus::Warning)));
    queue.takeAll();
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(HealthStatus::Ok)));
}

TEST_F(OrderQueueTest, AManagerMaySetTheRangeAndMayNotTurnItOff)
{
    EXPECT_THAT(service.published(), HasCheck("shop", "orders"));
    EXPECT_EQ(service.setWarningRange("shop", "orders", "length", "~:5"), SetResult::Accepted);
    EXPECT_EQ(service.setWarningRange("shop", "orders", "length", "off"), SetResult::Refused);
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasMetric("length", HasWarningRange("~:5"))));
}

TEST_F(OrderQueueTest, AManagerMayPauseIt)
{
    EXPECT_THAT(service.published(), HasCheck("shop", "orders"));
    EXPECT_FALSE(queue.isPaused());
    EXPECT_EQ(service.triggerFunction("shop", "orders", 1), SetResult::Accepted);
    EXPECT_TRUE(queue.isPaused());
}

TEST_F(OrderQueueTest, NothingIsLostWhileTheServiceIsAway)
{
    EXPECT_TRUE(service.waitForConnection());
    service.goAway();
    queue.add("bread");
    EXPECT_THAT(service.snapshot(), HasNoChecks());
    service.comeBack();
    EXPECT_THAT(service, Publishes(HasCheck("shop", "orders", HasMetric("length", HasValue(1)))));
}
