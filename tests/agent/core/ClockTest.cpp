// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <vector>

#include "support/ManualClock.h"

TEST(Clock, CallsOnceTheDelayHasPassed)
{
    support::ManualClock clock;
    QObject context;
    int calls = 0;
    clock.callAfter(100, &context, [&] { ++calls; });
    clock.advance(99);
    EXPECT_EQ(calls, 0);
    clock.advance(1);
    EXPECT_EQ(calls, 1);
    clock.advance(1000);
    EXPECT_EQ(calls, 1);
}

TEST(Clock, CallsAtOnceWhenTheTimeHasPassedAlready)
{
    support::ManualClock clock;
    QObject context;
    int calls = 0;
    clock.advance(100);
    clock.callAt(50, &context, [&] { ++calls; });
    clock.advance(0);
    EXPECT_EQ(calls, 1);
}

TEST(Clock, WaitsForTheRestWhenATimerFiresEarly)
{
    support::ManualClock clock(1);
    QObject context;
    qint64 calledAt = -1;
    clock.callAfter(100, &context, [&] { calledAt = clock.elapsedMs(); });
    clock.advance(1000);
    EXPECT_EQ(calledAt, 100);
}

TEST(Clock, ALateTimerCallsOnceAndNeverBeforeItsTime)
{
    support::ManualClock clock(-30);
    QObject context;
    std::vector<qint64> calls;
    clock.callAfter(100, &context, [&] { calls.push_back(clock.elapsedMs()); });
    clock.advance(1000);
    EXPECT_THAT(calls, testing::ElementsAre(130));
}

TEST(Clock, AfterAJumpEachCallComesOnceInOrder)
{
    support::ManualClock clock;
    QObject context;
    std::vector<int> calls;
    clock.callAfter(200, &context, [&] { calls.push_back(2); });
    clock.callAfter(100, &context, [&] { calls.push_back(1); });
    clock.callAfter(5000, &context, [&] { calls.push_back(3); });
    clock.jump(1000);
    EXPECT_THAT(calls, testing::ElementsAre(1, 2));
    clock.advance(4000);
    EXPECT_THAT(calls, testing::ElementsAre(1, 2, 3));
}
