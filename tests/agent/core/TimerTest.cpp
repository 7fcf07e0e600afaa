// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "agent/core/Timer.h"
#include "support/ManualClock.h"

using agent::Timer;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TimerTest : public testing::Test
{
protected:
    support::ManualClock clock;
    std::vector<qint64> calls;
    Timer timer{clock, [this] { calls.push_back(clock.elapsedMs()); }};
};

} // namespace

TEST_F(TimerTest, StartedOnceCallsOnce)
{
    timer.startOnce(100);
    EXPECT_TRUE(timer.isActive());
    clock.advance(1000);
    EXPECT_THAT(calls, ElementsAre(100));
    EXPECT_FALSE(timer.isActive());
}

TEST_F(TimerTest, StartedRepeatingCallsAtEachInterval)
{
    timer.startRepeating(100);
    clock.advance(350);
    EXPECT_THAT(calls, ElementsAre(100, 200, 300));
    EXPECT_TRUE(timer.isActive());
}

TEST_F(TimerTest, StoppedDoesNotCall)
{
    timer.startRepeating(100);
    timer.stop();
    EXPECT_FALSE(timer.isActive());
    clock.advance(1000);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(TimerTest, StartedAgainForgetsTheFirstStart)
{
    timer.startRepeating(100);
    clock.advance(50);
    timer.startOnce(100);
    clock.advance(1000);
    EXPECT_THAT(calls, ElementsAre(150));
}

TEST_F(TimerTest, TheCallMayStopItsTimer)
{
    int count = 0;
    std::unique_ptr<Timer> stopping;
    stopping = std::make_unique<Timer>(clock, [&] {
        if (++count == 2)
            stopping->stop();
    });
    stopping->startRepeating(10);
    clock.advance(1000);
    EXPECT_EQ(count, 2);
}

TEST_F(TimerTest, TheCallMayDestroyItsTimer)
{
    int count = 0;
    std::unique_ptr<Timer> mortal;
    mortal = std::make_unique<Timer>(clock, [&] {
        mortal.reset();
        ++count;
    });
    mortal->startRepeating(10);
    clock.advance(1000);
    EXPECT_EQ(count, 1);
}

TEST_F(TimerTest, DestroyedDoesNotCall)
{
    {
        Timer scoped(clock, [this] { calls.push_back(clock.elapsedMs()); });
        scoped.startOnce(100);
    }
    clock.advance(1000);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(TimerTest, AfterAJumpThereIsOneCallForAllMissedIntervals)
{
    timer.startRepeating(100);
    clock.jump(350);
    EXPECT_THAT(calls, ElementsAre(350));
    clock.advance(100);
    EXPECT_THAT(calls, ElementsAre(350, 450));
}
