// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

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
