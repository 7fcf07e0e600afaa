// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/core/DeadlineQueue.h"
#include "support/ManualClock.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

class DeadlineQueueTest : public testing::Test
{
protected:
    support::ManualClock clock;
    std::vector<std::pair<int, qint64>> expired;
    agent::DeadlineQueue<int> queue{clock, [this](int key, qint64 waitedMs) {
                                        expired.push_back({key, waitedMs});
                                    }};
};

} // namespace

TEST_F(DeadlineQueueTest, EachKeyExpiresAfterItsOwnDelay)
{
    queue.restart(1, 1000);
    queue.restart(2, 100);
    clock.advance(99);
    EXPECT_THAT(expired, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(expired, ElementsAre(Pair(2, 100)));
    clock.advance(10'000);
    EXPECT_THAT(expired, ElementsAre(Pair(2, 100), Pair(1, 1000)));
    EXPECT_EQ(queue.size(), 0u);
}

TEST_F(DeadlineQueueTest, RestartResetsTheDelay)
{
    queue.restart(1, 100);
    clock.advance(99);
    queue.restart(1, 200);
    clock.advance(199);
    EXPECT_THAT(expired, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(expired, ElementsAre(Pair(1, 200)));
}

TEST_F(DeadlineQueueTest, ARemovedKeyDoesNotExpire)
{
    queue.restart(1, 100);
    queue.remove(1);
    queue.remove(2);
    clock.advance(1000);
    EXPECT_THAT(expired, IsEmpty());
}

TEST_F(DeadlineQueueTest, NeedsOneTimerHoweverOftenKeysAreRestarted)
{
    for (int i = 0; i < 100; ++i) {
        queue.restart(i, 100'000);
        queue.restart(1000 + i % 2, 100);
        clock.advance(50);
    }
    EXPECT_LE(clock.liveCalls(), 1u);
}

TEST_F(DeadlineQueueTest, AfterAJumpAllThatIsDueExpiresInOrder)
{
    queue.restart(1, 1000);
    queue.restart(2, 100);
    queue.restart(3, 9000);
    clock.jump(2000);
    EXPECT_THAT(expired, ElementsAre(Pair(2, 2000), Pair(1, 2000)));
    EXPECT_EQ(queue.size(), 1u);
}
