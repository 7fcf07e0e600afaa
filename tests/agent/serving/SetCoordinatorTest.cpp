// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <set>

#include "agent/netsnmp/NetSnmp.h"
#include "agent/serving/SetCoordinator.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::CellStore;
using agent::CellValue;
using agent::ObjectId;
using agent::SetCoordinator;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int timeoutMs = 2000;
constexpr int settleMs = 20;

/// The error status of a decision, and the index of its varbind.
using Decision = std::pair<int, int>;

const Decision accepted{SNMP_ERR_NOERROR, 0};

struct RecordedOwners : agent::CellOwners
{
    bool isConnected(ApplicationId owner) const override { return disconnected.count(owner) == 0; }
    QString nameOf(ApplicationId owner) const override { return QStringLiteral("application %1").arg(owner); }
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

/// Application 7 owns an integer at 1, application 8 a text at 2.
class SetCoordinatorTest : public testing::Test
{
protected:
    SetCoordinatorTest()
    {
        store.set({1}, 10, 7);
        store.set({2}, std::string("ten"), 8);
        QObject::connect(&coordinator, &SetCoordinator::decided, &coordinator,
                         [this](SetCoordinator::Key, int index, int errorStatus) {
                             decisions.push_back({errorStatus, errorStatus == 0 ? 0 : index});
                         });
    }

    SetCoordinator::Key beginBoth() { return coordinator.begin({{{1}, 11}, {{2}, std::string("eleven")}}); }

    SetCoordinator::Key acceptBoth()
    {
        const SetCoordinator::Key key = beginBoth();
        coordinator.handleAnswer(7, owners.numbers.at(0), 0);
        coordinator.handleAnswer(8, owners.numbers.at(1), 0);
        clock.advance(settleMs);
        return key;
    }

    CellStore store;
    RecordedOwners owners;
    support::ManualClock clock;
    std::vector<Decision> decisions;
    SetCoordinator coordinator{store, owners, clock, timeoutMs};
};

} // namespace

// --- Before the owners are asked

TEST_F(SetCoordinatorTest, ChecksExistenceTypeAndValue)
{
    EXPECT_EQ(coordinator.check({{1}, 5}), SNMP_ERR_NOERROR);
    EXPECT_EQ(coordinator.check({{1}, std::string("5")}), SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(coordinator.check({{2}, 5}), SNMP_ERR_WRONGTYPE);
    EXPECT_EQ(coordinator.check({{2}, std::string("a\0b", 3)}), SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(coordinator.check({{3}, 5}), SNMP_ERR_NOCREATION);
}

TEST_F(SetCoordinatorTest, ACellOfALostApplicationIsUnavailable)
{
    owners.disconnected.insert(7);
    EXPECT_EQ(coordinator.check({{1}, 5}), SNMP_ERR_RESOURCEUNAVAILABLE);
    EXPECT_EQ(coordinator.check({{2}, std::string("text")}), SNMP_ERR_NOERROR);
}

TEST_F(SetCoordinatorTest, ChecksWhatTheMibAllowsWithoutAsking)
{
    const auto cell = [](std::initializer_list<unsigned int> column) {
        return agent::below(agent::below(agent::vigilMibRoot(), column), {1, 97, 1, 98});
    };
    const ObjectId status = cell({1, 1, 3});
    const ObjectId trigger = cell({5, 1, 1});
    const ObjectId range = agent::below(cell({2, 1, 3}), {1, 109});
    store.set(status, 0, 7);
    store.set(trigger, 1, 7);
    store.set(range, std::string(), 7);
    EXPECT_EQ(coordinator.check({status, 1}), SNMP_ERR_NOTWRITABLE);
    EXPECT_EQ(coordinator.check({trigger, 2}), SNMP_ERR_NOERROR);
    EXPECT_EQ(coordinator.check({trigger, 3}), SNMP_ERR_WRONGVALUE);
    EXPECT_EQ(coordinator.check({range, std::string(255, '1')}), SNMP_ERR_NOERROR);
    EXPECT_EQ(coordinator.check({range, std::string(256, '1')}), SNMP_ERR_WRONGLENGTH);
}

// --- The decision

TEST_F(SetCoordinatorTest, IsDecidedAMomentAfterTheLastOwnerAccepts)
{
    beginBoth();
    ASSERT_THAT(owners.asked, ElementsAre(7, 8));
    coordinator.handleAnswer(8, owners.numbers[1], 0);
    EXPECT_THAT(decisions, IsEmpty());
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    clock.advance(settleMs - 1);
    EXPECT_THAT(decisions, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(decisions, ElementsAre(accepted));
    EXPECT_THAT(owners.committed, IsEmpty());
}

TEST_F(SetCoordinatorTest, OfOneOwnerIsDecidedAMillisecondAfterItAccepts)
{
    coordinator.begin({{{1}, 11}});
    coordinator.handleAnswer(7, owners.numbers.at(0), 0);
    EXPECT_THAT(decisions, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(decisions, ElementsAre(accepted));
}

TEST_F(SetCoordinatorTest, AnOwnerLostRightAfterItsAnswerMakesTheResourceUnavailable)
{
    beginBoth();
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    coordinator.handleAnswer(8, owners.numbers[1], 0);
    coordinator.handleLost(7);
    clock.advance(settleMs);
    EXPECT_THAT(decisions, ElementsAre(Decision{SNMP_ERR_RESOURCEUNAVAILABLE, 0}));
}

// The time-out ended the settling: an owner lost right after a late answer was not noticed.
TEST_F(SetCoordinatorTest, TheTimeoutDoesNotShortenTheSettling)
{
    beginBoth();
    clock.advance(timeoutMs - 5);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    coordinator.handleAnswer(8, owners.numbers[1], 0);
    clock.advance(settleMs - 1);
    EXPECT_THAT(decisions, ElementsAre());
    clock.advance(1);
    EXPECT_THAT(decisions, ElementsAre(accepted));
    EXPECT_EQ(coordinator.counts().timedOut, 0u);
}

TEST_F(SetCoordinatorTest, IsDecidedAtTheFirstRefusal)
{
    beginBoth();
    coordinator.handleAnswer(8, owners.numbers[1], SNMP_ERR_NOACCESS);
    EXPECT_THAT(decisions, ElementsAre(Decision{SNMP_ERR_NOACCESS, 1}));
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_EQ(decisions.size(), 1u);
    EXPECT_EQ(coordinator.counts().refused, 1u);
}

TEST_F(SetCoordinatorTest, AnAnswerFromAnotherApplicationDoesNotCount)
{
    beginBoth();
    coordinator.handleAnswer(8, owners.numbers[0], 0);
    coordinator.handleAnswer(8, owners.numbers[1], 0);
    EXPECT_THAT(decisions, IsEmpty());
}

TEST_F(SetCoordinatorTest, ARepeatedAnswerDoesNotCountTwice)
{
    beginBoth();
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_THAT(decisions, IsEmpty());
}

TEST_F(SetCoordinatorTest, ALateAnswerIsNotMistakenForOneToTheNextSet)
{
    coordinator.drop(beginBoth());
    coordinator.begin({{{1}, 12}});
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_THAT(decisions, IsEmpty());
    coordinator.handleAnswer(7, owners.numbers[2], 0);
    clock.advance(settleMs);
    EXPECT_THAT(decisions, ElementsAre(accepted));
}

TEST_F(SetCoordinatorTest, ALostOwnerMakesTheResourceUnavailable)
{
    beginBoth();
    coordinator.handleLost(9);
    EXPECT_THAT(decisions, IsEmpty());
    coordinator.handleLost(8);
    EXPECT_THAT(decisions, ElementsAre(Decision{SNMP_ERR_RESOURCEUNAVAILABLE, 1}));
}

TEST_F(SetCoordinatorTest, ALostOwnerDecidesAllItsSets)
{
    beginBoth();
    coordinator.begin({{{1}, 12}});
    coordinator.begin({{{2}, std::string("twelve")}});
    coordinator.handleLost(7);
    EXPECT_THAT(decisions, ElementsAre(Decision{SNMP_ERR_RESOURCEUNAVAILABLE, 0},
                                       Decision{SNMP_ERR_RESOURCEUNAVAILABLE, 0}));
}

TEST_F(SetCoordinatorTest, ADecisionMayEndOtherSets)
{
    const SetCoordinator::Key one = coordinator.begin({{{1}, 11}});
    const SetCoordinator::Key other = coordinator.begin({{{1}, 12}});
    QObject::connect(&coordinator, &SetCoordinator::decided, &coordinator, [&] {
        coordinator.drop(one);
        coordinator.drop(other);
    });
    coordinator.handleLost(7);
    EXPECT_EQ(decisions.size(), 1u);
}

TEST_F(SetCoordinatorTest, AnswersBecomeStatusesForTheManager)
{
    const std::pair<int, int> statuses[] = {{0, SNMP_ERR_NOERROR},     {1, SNMP_ERR_WRONGVALUE},
                                            {2, SNMP_ERR_NOSUCHNAME},  {5, SNMP_ERR_GENERR},
                                            {10, SNMP_ERR_WRONGVALUE}, {18, SNMP_ERR_INCONSISTENTNAME},
                                            {19, SNMP_ERR_GENERR},     {-1, SNMP_ERR_GENERR}};
    for (const auto& [answered, told] : statuses) {
        decisions.clear();
        coordinator.begin({{{1}, 12}});
        coordinator.handleAnswer(7, owners.numbers.back(), answered);
        clock.advance(settleMs);
        EXPECT_THAT(decisions, ElementsAre(Decision{told, 0})) << answered;
    }
}

// --- Time-out

TEST_F(SetCoordinatorTest, ASilentOwnerMakesTheResourceUnavailable)
{
    beginBoth();
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    clock.advance(timeoutMs - 1);
    EXPECT_THAT(decisions, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(decisions, ElementsAre(Decision{SNMP_ERR_RESOURCEUNAVAILABLE, 1}));
    EXPECT_EQ(coordinator.counts().timedOut, 1u);
    EXPECT_EQ(coordinator.counts().refused, 0u);
}

TEST_F(SetCoordinatorTest, AfterATimeoutSetsOfTheOwnersCellsFailAtOnceForFiveSeconds)
{
    coordinator.begin({{{1}, 11}});
    clock.advance(timeoutMs);
    EXPECT_EQ(coordinator.check({{1}, 12}), SNMP_ERR_RESOURCEUNAVAILABLE);
    EXPECT_TRUE(coordinator.isUnresponsive({1}));
    EXPECT_EQ(coordinator.check({{2}, std::string("twelve")}), SNMP_ERR_NOERROR) << "another's cell";
    EXPECT_FALSE(coordinator.isUnresponsive({2}));
    clock.advance(4'999);
    EXPECT_EQ(coordinator.check({{1}, 12}), SNMP_ERR_RESOURCEUNAVAILABLE);
    clock.advance(1);
    EXPECT_EQ(coordinator.check({{1}, 12}), SNMP_ERR_NOERROR) << "the next SET asks again";
}

TEST_F(SetCoordinatorTest, AfterATimeoutOnlyOwnersWithoutAnAnswerAreUnavailable)
{
    beginBoth();
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    clock.advance(timeoutMs);
    EXPECT_EQ(coordinator.check({{1}, 12}), SNMP_ERR_NOERROR);
    EXPECT_EQ(coordinator.check({{2}, std::string("twelve")}), SNMP_ERR_RESOURCEUNAVAILABLE);
}

TEST_F(SetCoordinatorTest, ALateAnswerMakesTheOwnerAvailableAgain)
{
    coordinator.begin({{{1}, 11}});
    clock.advance(timeoutMs);
    coordinator.handleAnswer(7, owners.numbers[0], 0);
    EXPECT_EQ(coordinator.check({{1}, 12}), SNMP_ERR_NOERROR);
    EXPECT_THAT(owners.committed, IsEmpty());
}

TEST_F(SetCoordinatorTest, EachSetHasItsOwnTimeout)
{
    coordinator.begin({{{1}, 11}});
    clock.advance(timeoutMs / 2);
    coordinator.begin({{{1}, 12}});
    clock.advance(timeoutMs / 2);
    EXPECT_EQ(decisions.size(), 1u);
    clock.advance(timeoutMs / 2);
    EXPECT_EQ(decisions.size(), 2u);
}

TEST_F(SetCoordinatorTest, ADecidedSetDoesNotTimeOut)
{
    acceptBoth();
    clock.advance(qint64(10) * timeoutMs);
    EXPECT_THAT(decisions, ElementsAre(accepted));
    EXPECT_EQ(coordinator.counts().timedOut, 0u);
}

TEST_F(SetCoordinatorTest, ADroppedSetDoesNotTimeOut)
{
    coordinator.drop(beginBoth());
    clock.advance(qint64(10) * timeoutMs);
    EXPECT_THAT(decisions, IsEmpty());
    EXPECT_EQ(coordinator.counts().timedOut, 0u);
}

// --- After the decision

TEST_F(SetCoordinatorTest, CommitChangesTheCellsAndTellsTheOwners)
{
    EXPECT_TRUE(coordinator.commit(acceptBoth()));
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 11);
    EXPECT_EQ(std::get<std::string>(store.find({2})->served()), "eleven");
    EXPECT_THAT(owners.committed, ElementsAre(7, 8));
}

TEST_F(SetCoordinatorTest, AnUnacceptedSetChangesNothing)
{
    const SetCoordinator::Key key = beginBoth();
    coordinator.commit(key);
    coordinator.handleLost(8);
    coordinator.commit(key);
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 10);
    EXPECT_THAT(owners.committed, IsEmpty());
}

TEST_F(SetCoordinatorTest, AnAcceptedSetIsInvalidOnceAnOwnerIsLost)
{
    const SetCoordinator::Key key = acceptBoth();
    owners.disconnected.insert(8);
    EXPECT_FALSE(coordinator.isStillValid(key));
    EXPECT_FALSE(coordinator.commit(key));
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 10);
    EXPECT_THAT(owners.committed, IsEmpty());
}

TEST_F(SetCoordinatorTest, ADroppedSetChangesNothing)
{
    const SetCoordinator::Key key = acceptBoth();
    coordinator.drop(key);
    coordinator.commit(key);
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 10);
    EXPECT_THAT(owners.committed, IsEmpty());
}

TEST_F(SetCoordinatorTest, AnAcceptedSetIsInvalidOnceACellHasGoneOrChangedHands)
{
    const SetCoordinator::Key key = acceptBoth();
    EXPECT_TRUE(coordinator.isStillValid(key));
    store.set({1}, 99, 8);
    EXPECT_FALSE(coordinator.isStillValid(key));
    store.set({1}, 10, 7);
    EXPECT_TRUE(coordinator.isStillValid(key));
    store.unsetTree({2}, 8);
    EXPECT_FALSE(coordinator.isStillValid(key));
}
