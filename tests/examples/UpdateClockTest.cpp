// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "UpdateClock.h"

using std::chrono::hours;
using std::chrono::milliseconds;

namespace {

bool never()
{
    return false;
}

} // namespace

TEST(UpdateClock, WakesAtItsInterval)
{
    UpdateClock clock(milliseconds(1), never);
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Interval);
}

TEST(UpdateClock, ARequestBeforeTheWaitIsNotLost)
{
    UpdateClock clock(hours(1), never);
    clock.requestNow();
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Request);
}

TEST(UpdateClock, ARequestFromAnotherThreadEndsTheWait)
{
    UpdateClock clock(hours(1), never);
    std::thread other([&] { clock.requestNow(); });
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Request);
    other.join();
}

TEST(UpdateClock, RequestsBeforeOneWaitCountAsOne)
{
    UpdateClock clock(milliseconds(1), never);
    clock.requestNow();
    clock.requestNow();
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Request);
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Interval);
}

TEST(UpdateClock, AStopEndsTheWaitAndPrecedesARequest)
{
    std::atomic<int> questions{0};
    UpdateClock clock(hours(1), [&] { return ++questions > 3; });
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Stop);
    clock.requestNow();
    EXPECT_EQ(clock.wait(), UpdateClock::Wake::Stop);
}
