// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <memory>

#include "agent/core/SystemClock.h"
#include "support/RunUntil.h"

using agent::SystemClock;

TEST(SystemClock, CallsAfterTheDelay)
{
    SystemClock clock;
    QObject context;
    const qint64 start = clock.elapsedMs();
    qint64 called = -1;
    clock.callAfter(20, &context, [&] { called = clock.elapsedMs(); });
    EXPECT_EQ(called, -1);
    ASSERT_TRUE(support::runUntil([&] { return called >= 0; }));
    EXPECT_GE(called - start, 20);
}

TEST(SystemClock, ADestroyedContextCancelsTheCall)
{
    SystemClock clock;
    QObject other;
    auto context = std::make_unique<QObject>();
    bool isCalled = false;
    bool isOtherCalled = false;
    clock.callAfter(0, context.get(), [&] { isCalled = true; });
    clock.callAfter(1, &other, [&] { isOtherCalled = true; });
    context.reset();
    ASSERT_TRUE(support::runUntil([&] { return isOtherCalled; }));
    EXPECT_FALSE(isCalled);
}

TEST(SystemClock, TellsTheTimeInUtc)
{
    EXPECT_EQ(SystemClock().nowUtc().timeSpec(), Qt::UTC);
}
