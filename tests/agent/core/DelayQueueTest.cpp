// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/core/DelayQueue.h"
#include "support/ManualClock.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using Queue = agent::DelayQueue<int>;

class DelayQueueTest : public testing::Test
{
protected:
    Queue queueOf(qint64 delayMs)
    {
        return Queue(clock, delayMs, [this](int key, qint64 waitedMs) {
            expired.push_back({key, waitedMs});
        });
    }

    support::ManualClock clock;
    std::vector<std::pair<int, qint64>> expired;
};

} // namespace

TEST_F(DelayQueueTest, EachKeyExpiresOnceAfterTheDelay)
{
    Queue queue = queueOf(100);
    queue.restart(1);
    clock.advance(60);
    queue.restart(2);
    clock.advance(39);
    EXPECT_THAT(expired, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(expired, ElementsAre(Pair(1, 100)));
    clock.advance(1000);
    EXPECT_THAT(expired, ElementsAre(Pair(1, 100), Pair(2, 100)));
}

TEST_F(DelayQueueTest, RestartResetsTheDelayAndStartDoesNot)
{
    Queue queue = queueOf(100);
    queue.restart(1);
    queue.start(2);
    clock.advance(99);
    queue.restart(1);
    queue.start(2);
    clock.advance(99);
    EXPECT_THAT(expired, ElementsAre(Pair(2, 100)));
    clock.advance(1);
    EXPECT_THAT(expired, ElementsAre(Pair(2, 100), Pair(1, 100)));
}

TEST_F(DelayQueueTest, ARemovedKeyDoesNotExpire)
{
    Queue queue = queueOf(100);
    queue.restart(1);
    queue.restart(2);
    queue.remove(1);
    queue.remove(3);
    clock.advance(100);
    EXPECT_THAT(expired, ElementsAre(Pair(2, 100)));
}

TEST_F(DelayQueueTest, ContainsThePendingKeys)
{
    Queue queue = queueOf(100);
    queue.restart(1);
    queue.restart(2);
    queue.remove(2);
    EXPECT_TRUE(queue.contains(1));
    EXPECT_FALSE(queue.contains(2));
    EXPECT_EQ(queue.size(), 1u);
    clock.advance(100);
    EXPECT_FALSE(queue.contains(1));
}

TEST_F(DelayQueueTest, AnExpiringKeyMayBeRestarted)
{
    int times = 0;
    std::unique_ptr<Queue> queue;
    queue = std::make_unique<Queue>(clock, 100, [&](int key, qint64) {
        if (++times < 3)
            queue->restart(key);
    });
    queue->restart(1);
    clock.advance(1000);
    EXPECT_EQ(times, 3);
}

TEST_F(DelayQueueTest, WithTheDelayNeverNothingExpires)
{
    Queue queue = queueOf(Queue::never);
    queue.restart(1);
    queue.start(2);
    clock.advance(1'000'000'000);
    EXPECT_THAT(expired, IsEmpty());
}

TEST_F(DelayQueueTest, NothingExpiresAfterTheQueueIsDestroyed)
{
    {
        Queue queue = queueOf(100);
        queue.restart(1);
    }
    clock.advance(100);
    EXPECT_THAT(expired, IsEmpty());
}

TEST_F(DelayQueueTest, AfterAJumpAllThatIsDueExpiresOnce)
{
    Queue queue = queueOf(100);
    queue.restart(1);
    clock.advance(50);
    queue.restart(2);
    clock.jump(1000);
    EXPECT_THAT(expired, ElementsAre(Pair(1, 1050), Pair(2, 1000)));
    queue.restart(3);
    clock.advance(100);
    EXPECT_THAT(expired, ElementsAre(Pair(1, 1050), Pair(2, 1000), Pair(3, 100)));
}
