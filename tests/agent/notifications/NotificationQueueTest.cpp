// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

#include <malloc.h>

#include "agent/notifications/NotificationQueue.h"
#include "support/ManualClock.h"

using agent::Notification;
using agent::NotificationQueue;
using agent::ObjectId;

namespace {

class NotificationQueueTest : public testing::Test
{
protected:
    void addHealth(int count)
    {
        for (int i = 0; i < count; ++i)
            addChange(++m_check, 2, 0);
    }

    void addChange(unsigned int check, int status, int previous, agent::ApplicationId application = 1)
    {
        queue.sendInTurn({{check}, status, previous, "full", false}, application);
    }

    /// The checks in the order in which they were sent.
    std::vector<unsigned int> sentChecks() const
    {
        std::vector<unsigned int> checks;
        for (const Notification& each : sent)
            checks.push_back(each.objects.front().first.back());
        return checks;
    }

    void addValues(int count)
    {
        for (int i = 0; i < count; ++i)
            queue.sendNowOrDrop(Notification::ofValue(value, i));
    }

    size_t sentValues() const
    {
        return static_cast<size_t>(std::count_if(sent.begin(), sent.end(), [&](const Notification& each) {
            return each.objects.front().first == value;
        }));
    }

    size_t sentHealth() const { return sent.size() - sentValues(); }

    const ObjectId value{1, 3, 6, 1, 4, 1, 32473, 5};
    support::ManualClock clock;
    std::vector<Notification> sent;
    static constexpr size_t maxMemory = 60'000'000;
    NotificationQueue queue{clock, maxMemory,
                            [this](const Notification& notification) { sent.push_back(notification); }};

private:
    unsigned int m_check = 0;
};

} // namespace

TEST_F(NotificationQueueTest, SendsAFewAtOnce)
{
    addHealth(100);
    addValues(100);
    EXPECT_EQ(sentHealth(), 100u);
    EXPECT_EQ(sentValues(), 100u);
}

TEST_F(NotificationQueueTest, ChangesOfHealthWaitForTheirTurnInOrder)
{
    addHealth(2000);
    EXPECT_LT(sent.size(), 300u);
    clock.advance(1000);
    EXPECT_GT(sent.size(), 400u);
    EXPECT_LT(sent.size(), 600u);
    clock.advance(10'000);
    ASSERT_EQ(sent.size(), 2000u);
    for (size_t i = 0; i < sent.size(); ++i)
        ASSERT_EQ(sent[i].objects.front().first.back(), i + 1);
    EXPECT_EQ(queue.dropped(), 0u);
}

TEST_F(NotificationQueueTest, ValuesAreDroppedRatherThanDelayed)
{
    addValues(5000);
    const size_t first = sent.size();
    EXPECT_LT(first, 600u);
    EXPECT_EQ(queue.dropped(), 5000 - first);
    clock.advance(10'000);
    EXPECT_EQ(sent.size(), first);
    addValues(1);
    EXPECT_EQ(sent.size(), first + 1);
}

TEST_F(NotificationQueueTest, AFloodOfValuesDoesNotDelayChangesOfHealth)
{
    addHealth(700);
    for (int i = 0; i < 300; ++i) {
        addValues(100);
        clock.advance(10);
    }
    EXPECT_EQ(sentHealth(), 700u);
}

TEST_F(NotificationQueueTest, TheQueueIsBounded)
{
    addHealth(50'000);
    EXPECT_GT(queue.dropped(), 0u);
    clock.advance(120'000);
    EXPECT_EQ(sent.size() + queue.dropped(), 50'000u);
    EXPECT_GT(sent.size(), 9'000u);
    addHealth(1);
    EXPECT_EQ(sent.size() + queue.dropped(), 50'001u);
}

// The queue counted summaries as they are sent, but kept all of their 60 000 bytes: ten times the limit.
TEST_F(NotificationQueueTest, KeepsOfASummaryOnlyWhatIsSent)
{
    bool isReady = false;
    queue.setReady([&] { return isReady; });
    const std::string longText(60'000, 'x');
    const size_t heapBefore = mallinfo2().uordblks;
    for (unsigned int check = 0; check < 1000; ++check)
        queue.sendInTurn({{check}, 2, 0, longText, false}, 1);
    EXPECT_LT(mallinfo2().uordblks - heapBefore, queue.memory());
    EXPECT_LE(queue.memory(), maxMemory);
    isReady = true;
    clock.advance(120'000);
    EXPECT_EQ(sent.size(), 1000u);
    EXPECT_EQ(queue.memory(), 0u);
}

// --- Without a master

TEST_F(NotificationQueueTest, ChangesOfHealthWaitForTheMaster)
{
    bool isReady = false;
    queue.setReady([&] { return isReady; });
    addChange(1, 2, 0);
    addValues(1);
    clock.advance(3'600'000);
    EXPECT_EQ(sent.size(), 0u);
    EXPECT_EQ(queue.dropped(), 1u) << "a value does not wait";
    isReady = true;
    clock.advance(1000);
    EXPECT_THAT(sentChecks(), testing::ElementsAre(1));
}

TEST_F(NotificationQueueTest, CriticalGoesFirst)
{
    bool isReady = false;
    queue.setReady([&] { return isReady; });
    addChange(1, 1, 0);
    addChange(2, 3, 0);
    addChange(3, 2, 0);
    isReady = true;
    clock.advance(1000);
    EXPECT_THAT(sentChecks(), testing::ElementsAre(3, 1, 2));
}

TEST_F(NotificationQueueTest, ApplicationsTakeTurns)
{
    bool isReady = false;
    queue.setReady([&] { return isReady; });
    for (unsigned int check = 1; check <= 5; ++check)
        addChange(check, 1, 0, 1);
    addChange(11, 1, 0, 2);
    addChange(21, 1, 0, 3);
    isReady = true;
    clock.advance(1000);
    EXPECT_THAT(sentChecks(), testing::ElementsAre(1, 11, 21, 2, 3, 4, 5));
}

TEST_F(NotificationQueueTest, AFurtherChangeReplacesAWaitingOne)
{
    bool isReady = false;
    queue.setReady([&] { return isReady; });
    addChange(1, 1, 0);
    addChange(1, 2, 1);
    addChange(2, 1, 0);
    addChange(2, 0, 1);
    isReady = true;
    clock.advance(1000);
    ASSERT_THAT(sentChecks(), testing::ElementsAre(1)) << "the changes of check 2 cancel out";
    EXPECT_EQ(std::get<int>(sent[0].objects[0].second), 2);
    EXPECT_EQ(std::get<int>(sent[0].objects[1].second), 0) << "the status that managers know";
}

TEST_F(NotificationQueueTest, AFullQueueDropsChangesOfTheApplicationWithTheMost)
{
    bool isReady = false;
    queue.setReady([&] { return isReady; });
    addChange(1'000'000, 1, 0, 2);
    addHealth(20'000);
    EXPECT_GT(queue.dropped(), 0u);
    addChange(1'000'001, 1, 0, 2);
    isReady = true;
    clock.advance(120'000);
    EXPECT_THAT(sentChecks(), testing::IsSupersetOf({1'000'000u, 1'000'001u}));
    EXPECT_EQ(sent.size() + queue.dropped(), 20'002u);
}

// One application with CRITICAL checks that never stop flapping kept everybody's recoveries away.
TEST_F(NotificationQueueTest, AFloodOfCriticalChangesDoesNotHoldBackRecoveries)
{
    constexpr unsigned int recovered = 1'000'000;
    for (int second = 0; second < 30; ++second) {
        addHealth(2000);
        if (second == 0)
            addChange(recovered, 0, 2, 2);
        clock.advance(1000);
    }
    EXPECT_THAT(sentChecks(), testing::Contains(recovered));
}
