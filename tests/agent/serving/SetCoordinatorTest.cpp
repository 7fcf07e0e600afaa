// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <optional>
#include <set>

#include "agent/netsnmp/NetSnmp.h"
#include "agent/serving/SetCoordinator.h"
#include "support/RunUntil.h"

using agent::ApplicationId;
using agent::CellStore;
using agent::CellValue;
using agent::ObjectId;
using agent::SetCoordinator;
using agent::SetVarbind;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int longTime = 60'000;

struct RecordedOwners : agent::CellOwners
{
    bool isConnected(ApplicationId owner) const override { return disconnected.count(owner) == 0; }
    void ask(ApplicationId owner, int number, const ObjectId&, const CellValue&) override
    {
        asked.push_back(owner);
        numbers.push_back(number);
    }
    void commit(ApplicationId owner, const ObjectId&, const CellValue&) override
    {
        committed.push_back(owner);
    }

    std::set<ApplicationId> disconnected;
    std::vector<ApplicationId> asked;
    std::vector<int> numbers;
    std::vector<ApplicationId> committed;
};

struct Decision
{
    int index;
    int errorStatus;
};

class SetCoordinatorTest : public testing::Test
{
protected:
    SetCoordinatorTest()
    {
        store.set({1}, 10, 7);
        store.set({2}, std::string("ten"), 8);
    }

    SetCoordinator::Key beginBoth(SetCoordinator& coordinator)
    {
        QObject::connect(&coordinator, &SetCoordinator::decided, &coordinator,
                         [this](SetCoordinator::Key, int index, int errorStatus) {
                             decisions.push_back({index, errorStatus});
                         });
        return coordinator.begin({{{1}, 11}, {{2}, std::string("eleven")}});
    }

    CellStore store;
    RecordedOwners owners;
    std::vector<Decision> decisions;
};

} // namespace

TEST_F(SetCoordinatorTest, ChecksWhatNeedsNoApplication)
{
    const SetCoordinator coordinator(store, owners, longTime);
    EXPECT_EQ(coordinator.check({{1}, 5}), SNMP_ERR_NOERROR);
    EXPECT_EQ(coordinator.check({{1}, std::string("5")}), SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(coordinator.check({{2}, 5}), SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(coordinator.check({{2}, std::string("a\0b", 3)}), SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(coordinator.check({{3}, 5}), SNMP_ERR_NOCREATION);
}

TEST_F(SetCoordinatorTest, ACellThatALostApplicationHasLeftBehindIsUnavailable)
{
    const SetCoordinator coordinator(store, owners, longTime);
    owners.disconnected.insert(7);
    EXPECT_EQ(coordinator.check({{1}, 5}), SNMP_ERR_RESOURCEUNAVAILABLE);
    EXPECT_EQ(coordinator.check({{2}, std::string("text")}), SNMP_ERR_NOERROR);
}

TEST_F(SetCoordinatorTest, IsDecidedWhenTheLastOwnerHasAccepted)
{
    SetCoordinator coordinator(store, owners, longTime);
    beginBoth(coordinator);
    ASSERT_THAT(owners.asked, ElementsAre(7, 8));
    coordinator.handleAnswer(8, owners.numbers[1], 0);
    EXPECT_THAT(decisions, IsEmpty());
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    ASSERT_EQ(decisions.size(), 1u);
    EXPECT_EQ(decisions[0].errorStatus, SNMP_ERR_NOERROR);
    EXPECT_THAT(owners.committed, IsEmpty());
}

TEST_F(SetCoordinatorTest, IsDecidedAtTheFirstRefusal)
{
    SetCoordinator coordinator(store, owners, longTime);
    beginBoth(coordinator);
    coordinator.handleAnswer(8, owners.numbers[1], SNMP_ERR_NOACCESS);
    ASSERT_EQ(decisions.size(), 1u);
    EXPECT_EQ(decisions[0].index, 1);
    EXPECT_EQ(decisions[0].errorStatus, SNMP_ERR_NOACCESS);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_EQ(decisions.size(), 1u);
}

TEST_F(SetCoordinatorTest, CommitChangesTheCellsAndTellsTheOwners)
{
    SetCoordinator coordinator(store, owners, longTime);
    coordinator.commit(beginBoth(coordinator));
    EXPECT_EQ(std::get<int>(store.find({1})->value), 11);
    EXPECT_EQ(std::get<std::string>(store.find({2})->value), "eleven");
    EXPECT_THAT(owners.committed, ElementsAre(7, 8));
}

TEST_F(SetCoordinatorTest, ADroppedSetChangesNothing)
{
    SetCoordinator coordinator(store, owners, longTime);
    const SetCoordinator::Key key = beginBoth(coordinator);
    coordinator.drop(key);
    coordinator.commit(key);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_EQ(std::get<int>(store.find({1})->value), 10);
    EXPECT_THAT(owners.committed, IsEmpty());
    EXPECT_THAT(decisions, IsEmpty());
}

TEST_F(SetCoordinatorTest, AnAnswerFromAnotherApplicationDoesNotCount)
{
    SetCoordinator coordinator(store, owners, longTime);
    beginBoth(coordinator);
    coordinator.handleAnswer(8, owners.numbers[0], 0);
    coordinator.handleAnswer(8, owners.numbers[1], 0);
    EXPECT_THAT(decisions, IsEmpty());
}

TEST_F(SetCoordinatorTest, AnAnswerThatIsRepeatedDoesNotCountTwice)
{
    SetCoordinator coordinator(store, owners, longTime);
    beginBoth(coordinator);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_THAT(decisions, IsEmpty());
}

TEST_F(SetCoordinatorTest, QuestionsOfALaterSetHaveNumbersOfTheirOwn)
{
    SetCoordinator coordinator(store, owners, longTime);
    coordinator.drop(beginBoth(coordinator));
    coordinator.begin({{{1}, 12}});
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_THAT(decisions, IsEmpty());
    coordinator.handleAnswer(7, owners.numbers[2], 0);
    EXPECT_EQ(decisions.size(), 1u);
}

TEST_F(SetCoordinatorTest, ALostOwnerMakesTheResourceUnavailable)
{
    SetCoordinator coordinator(store, owners, longTime);
    beginBoth(coordinator);
    coordinator.handleLost(9);
    EXPECT_THAT(decisions, IsEmpty());
    coordinator.handleLost(8);
    ASSERT_EQ(decisions.size(), 1u);
    EXPECT_EQ(decisions[0].index, 1);
    EXPECT_EQ(decisions[0].errorStatus, SNMP_ERR_RESOURCEUNAVAILABLE);
}

TEST_F(SetCoordinatorTest, AnOwnerThatDoesNotAnswerInTimeMakesTheResourceUnavailable)
{
    SetCoordinator coordinator(store, owners, 1);
    beginBoth(coordinator);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    ASSERT_TRUE(support::runUntil([&] { return !decisions.empty(); }));
    EXPECT_EQ(decisions[0].index, 1);
    EXPECT_EQ(decisions[0].errorStatus, SNMP_ERR_RESOURCEUNAVAILABLE);
}

TEST_F(SetCoordinatorTest, AnAcceptedSetIsNoLongerValidOnceACellHasGoneOrChangedHands)
{
    SetCoordinator coordinator(store, owners, longTime);
    const SetCoordinator::Key key = beginBoth(coordinator);
    EXPECT_TRUE(coordinator.isStillValid(key));
    store.set({1}, 99, 8);
    EXPECT_FALSE(coordinator.isStillValid(key));
    store.set({1}, 10, 7);
    EXPECT_TRUE(coordinator.isStillValid(key));
    store.unsetTree({2}, 8);
    EXPECT_FALSE(coordinator.isStillValid(key));
}

TEST_F(SetCoordinatorTest, AnswersBecomeStatusesThatAManagerUnderstands)
{
    const std::pair<int, int> statuses[] = {{0, SNMP_ERR_NOERROR},     {1, SNMP_ERR_WRONGVALUE},
                                            {2, SNMP_ERR_NOSUCHNAME},  {5, SNMP_ERR_GENERR},
                                            {10, SNMP_ERR_WRONGVALUE}, {18, SNMP_ERR_INCONSISTENTNAME},
                                            {19, SNMP_ERR_GENERR},     {-1, SNMP_ERR_GENERR}};
    SetCoordinator coordinator(store, owners, longTime);
    for (const auto& [answered, told] : statuses) {
        decisions.clear();
        coordinator.disconnect();
        coordinator.drop(beginBoth(coordinator));
        coordinator.begin({{{1}, 12}});
        coordinator.handleAnswer(7, owners.numbers.back(), answered);
        ASSERT_EQ(decisions.size(), 1u) << answered;
        EXPECT_EQ(decisions[0].errorStatus, told) << answered;
    }
}
