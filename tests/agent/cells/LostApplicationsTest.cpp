// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "agent/cells/LostApplications.h"
#include "agent/core/Turn.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::LostApplications;
using agent::Turn;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Lost applications with cells in a store. It carries out their actions and records them.
class LostApplicationsTest : public testing::Test, protected LostApplications::Actions
{
protected:
    using State = LostApplications::State;

    static constexpr qint64 graceMs = 10'000;
    static constexpr qint64 forgetMs = 86'400'000;

    static LostApplications::Settings settings() { return {graceMs, forgetMs, 3, 9}; }

    void publish(ApplicationId application, std::initializer_list<unsigned int> cells)
    {
        for (const unsigned int cell : cells)
            store.set({cell}, 1, application);
    }

    /// The application publishes cells of a lost one.
    void takeOver(ApplicationId lost, ApplicationId application, std::initializer_list<unsigned int> cells)
    {
        for (const unsigned int cell : cells) {
            store.set({cell}, 1, application);
            applications.handleCellReturned(lost);
        }
    }

    std::optional<State> state() const { return applications.stateOf(1); }

    void cover(ApplicationId application, const QDateTime& since) override
    {
        actions.push_back("cover " + std::to_string(application));
        lostSince = since;
    }
    void remove(ApplicationId application, size_t most) override
    {
        store.remove(application, store.firstOf(application, most));
        actions.push_back("remove " + std::to_string(application));
    }
    void end(ApplicationId application) override
    {
        EXPECT_FALSE(applications.contains(application));
        actions.push_back("end " + std::to_string(application));
    }

    support::ManualClock clock;
    agent::CellStore store;
    LostApplications applications{store, clock, settings(), *this};
    std::vector<std::string> actions;
    QDateTime lostSince;
};

/// Application 1 is lost with the cells 1, 2 and 3.
class OneLostApplication : public LostApplicationsTest
{
protected:
    OneLostApplication()
    {
        publish(1, {1, 2, 3});
        applications.add({1});
    }
};

/// Lost applications with many cells. Between two turns of the event loop it looks at the store, as managers
/// may do.
class LeavingApplications : public LostApplicationsTest
{
protected:
    static constexpr size_t mostPerTurn = Turn::maxPieces * LostApplications::pieceSize;
    static constexpr size_t many = 3 * mostPerTurn + 1;

    LeavingApplications()
    {
        for (const ApplicationId application : {1u, 2u}) {
            for (unsigned int cell = 0; cell < many; ++cell)
                store.set({static_cast<unsigned int>(application), cell}, 1, application);
        }
    }

    void afterEachTurn(const std::function<bool()>& look)
    {
        clock.callAfter(0, &context, [=] {
            if (look())
                afterEachTurn(look);
        });
    }

    LostApplications others{store, clock, {graceMs, forgetMs, 3, 10 * many}, *this};
    QObject context;
};

} // namespace

TEST_F(LostApplicationsTest, AConnectedApplicationHasNoState)
{
    publish(1, {1});
    EXPECT_FALSE(applications.contains(1));
    EXPECT_EQ(state(), std::nullopt);
}

// --- InGrace

TEST_F(OneLostApplication, StaysUncoveredWithinTheGracePeriod)
{
    clock.advance(graceMs - 1);
    EXPECT_EQ(state(), State::InGrace);
    EXPECT_THAT(actions, IsEmpty());
}

TEST_F(OneLostApplication, IsCoveredAfterTheGracePeriodWithTheTimeOfTheLoss)
{
    const QDateTime loss = clock.nowUtc();
    clock.advance(graceMs);
    EXPECT_EQ(state(), State::Covered);
    EXPECT_THAT(actions, ElementsAre("cover 1"));
    EXPECT_EQ(lostSince, loss);
}

TEST_F(OneLostApplication, IsReturningAfterItsFirstCellReturned)
{
    takeOver(1, 2, {1});
    EXPECT_EQ(state(), State::Returning);
    EXPECT_THAT(actions, IsEmpty());
}

TEST_F(OneLostApplication, EndsWhenItsLastCellReturned)
{
    takeOver(1, 2, {1, 2, 3});
    EXPECT_EQ(state(), std::nullopt);
    clock.advance(forgetMs);
    EXPECT_THAT(actions, ElementsAre("end 1")) << "no delay may outlive the loss";
}

// --- Covered

TEST_F(OneLostApplication, IsRemovedWhenItHasNotReturnedInTime)
{
    clock.advance(forgetMs - 1);
    EXPECT_EQ(state(), State::Covered);
    clock.advance(1);
    EXPECT_THAT(actions, ElementsAre("cover 1", "remove 1", "end 1"));
}

TEST_F(OneLostApplication, CanReturnAfterItWasCovered)
{
    clock.advance(graceMs);
    takeOver(1, 2, {1});
    EXPECT_EQ(state(), State::Returning);
}

TEST_F(LostApplicationsTest, NothingIsRemovedIfForgettingIsSwitchedOff)
{
    LostApplications::Settings lasting = settings();
    lasting.forgetMs = agent::DelayQueue<ApplicationId>::never;
    LostApplications others(store, clock, lasting, *this);
    publish(1, {1});
    others.add({1});
    clock.advance(1000 * forgetMs);
    EXPECT_THAT(actions, ElementsAre("cover 1"));
}

// --- Returning

TEST_F(OneLostApplication, LosesItsOtherCellsOneGracePeriodAfterTheFirstReturned)
{
    clock.advance(2 * graceMs);
    takeOver(1, 2, {1});
    clock.advance(graceMs - 1);
    takeOver(1, 2, {2}); // does not restart the delay
    EXPECT_EQ(state(), State::Returning);
    clock.advance(1);
    EXPECT_THAT(actions, ElementsAre("cover 1", "remove 1", "end 1"));
    EXPECT_EQ(store.countOf(2), 2u);
}

TEST_F(OneLostApplication, IsCoveredWhileItReturnsIfTheGracePeriodEnds)
{
    clock.advance(graceMs / 2);
    takeOver(1, 2, {1});
    clock.advance(graceMs / 2);
    EXPECT_EQ(state(), State::Returning);
    EXPECT_THAT(actions, ElementsAre("cover 1"));
}

TEST_F(OneLostApplication, CanBeForgottenWhileItReturns)
{
    clock.advance(forgetMs - graceMs / 2);
    takeOver(1, 2, {1});
    clock.advance(graceMs / 2);
    EXPECT_THAT(actions, ElementsAre("cover 1", "remove 1", "end 1"));
    clock.advance(graceMs);
    EXPECT_EQ(actions.size(), 3u);
}

// --- Leaving

// Managers waited 112 ms for an application with 100,000 cells.
TEST_F(LeavingApplications, ManyCellsGoInManyTurnsOfTheEventLoop)
{
    for (const ApplicationId application : {1u, 2u}) {
        others.add({application});
        EXPECT_TRUE(others.forget(application));
    }
    EXPECT_EQ(store.size(), 2 * many) << "the caller does not wait";
    size_t before = store.size();
    size_t most = 0;
    afterEachTurn([&] {
        most = std::max(most, before - store.size());
        before = store.size();
        return before > 0;
    });
    clock.advance(0);
    EXPECT_EQ(store.size(), 0u);
    EXPECT_GT(most, 0u);
    EXPECT_LE(most, mostPerTurn) << "of both together";
    EXPECT_FALSE(others.contains(1));
    EXPECT_FALSE(others.contains(2));
    EXPECT_EQ(std::count(actions.begin(), actions.end(), "end 1"), 1);
}

TEST_F(LeavingApplications, ACellThatReturnsMeanwhileStays)
{
    others.add({1});
    EXPECT_TRUE(others.forget(1));
    afterEachTurn([&] {
        EXPECT_EQ(others.stateOf(1), State::Leaving);
        EXPECT_FALSE(others.forget(1));
        store.set({1, many - 1}, 2, 3);
        others.handleCellReturned(1);
        return false;
    });
    clock.advance(0);
    EXPECT_EQ(others.stateOf(1), std::nullopt);
    EXPECT_EQ(store.countOf(1), 0u);
    EXPECT_EQ(store.countOf(3), 1u);
}

TEST_F(LeavingApplications, TheLastCellToReturnIsTheEnd)
{
    others.add({1});
    EXPECT_TRUE(others.forget(1));
    afterEachTurn([&] {
        for (const agent::ObjectId& id : store.idsOf(1, {})) {
            store.set(id, 2, 3);
            others.handleCellReturned(1);
        }
        EXPECT_EQ(others.stateOf(1), std::nullopt);
        return false;
    });
    clock.advance(2 * forgetMs);
    EXPECT_EQ(std::count(actions.begin(), actions.end(), "end 1"), 1);
    EXPECT_GT(store.countOf(3), 0u);
}

TEST_F(LeavingApplications, NoLongerCountForTheLimits)
{
    others.add({1});
    EXPECT_TRUE(others.forget(1));
    for (const ApplicationId application : {3u, 4u, 5u}) {
        publish(application, {static_cast<unsigned int>(application)});
        others.add({application});
    }
    EXPECT_EQ(others.stateOf(3), State::InGrace);
}

TEST_F(LeavingApplications, RoomIsMadeByAFewCellsAtATime)
{
    others.add({1});
    others.add({2});
    EXPECT_TRUE(others.removeSomeOf({}));
    EXPECT_EQ(store.countOf(1), many - LostApplications::pieceSize);
    EXPECT_TRUE(others.removeSomeOf({}));
    EXPECT_EQ(store.countOf(1), many - 2 * LostApplications::pieceSize);
    EXPECT_EQ(others.stateOf(2), State::InGrace);
    clock.advance(0);
    EXPECT_EQ(store.countOf(1), 0u);
    EXPECT_EQ(store.countOf(2), many);
    EXPECT_FALSE(others.removeSomeOf("1001"));
}

// --- Several

TEST_F(OneLostApplication, KeepsItsOwnTimesIfItsSuccessorIsLostToo)
{
    clock.advance(graceMs / 2);
    takeOver(1, 2, {1});
    clock.advance(1);
    applications.add({2});
    clock.advance(graceMs / 2);
    EXPECT_THAT(actions, ElementsAre("cover 1"));
    clock.advance(graceMs / 2);
    EXPECT_THAT(actions, ElementsAre("cover 1", "remove 1", "end 1", "cover 2"));
}

TEST_F(LostApplicationsTest, TheOldestLossMakesRoomIfThereAreTooMany)
{
    for (const ApplicationId application : {1u, 2u, 3u, 4u})
        publish(application, {static_cast<unsigned int>(application)});
    for (const ApplicationId application : {3u, 1u, 4u}) {
        applications.add({application});
        clock.advance(1);
    }
    EXPECT_THAT(actions, IsEmpty());
    applications.add({2});
    clock.advance(0);
    EXPECT_THAT(actions, ElementsAre("remove 3", "end 3"));
}

TEST_F(LostApplicationsTest, TheOldestLossMakesRoomEvenIfTheHostsTimeIsSetBack)
{
    for (const ApplicationId application : {1u, 2u, 3u, 4u}) {
        publish(application, {static_cast<unsigned int>(application)});
        applications.add({application});
        clock.setBack(1000);
    }
    clock.advance(0);
    EXPECT_THAT(actions, ElementsAre("remove 1", "end 1"));
}

TEST_F(LostApplicationsTest, TheOldestLossMakesRoomIfThereAreTooManyCells)
{
    publish(1, {1, 2, 3, 4, 5});
    publish(2, {6, 7, 8, 9});
    publish(3, {10});
    applications.add({1});
    clock.advance(1);
    applications.add({2});
    EXPECT_THAT(actions, IsEmpty());
    clock.advance(1);
    applications.add({3});
    clock.advance(0);
    EXPECT_THAT(actions, ElementsAre("remove 1", "end 1"));
}

TEST_F(LostApplicationsTest, NoUserPushesOutALossOfAnother)
{
    publish(1, {1});
    applications.add({1, "1001", QString()});
    for (ApplicationId application = 2; application < 300; ++application) {
        clock.advance(1);
        publish(application, {static_cast<unsigned int>(application)});
        applications.add({application, "1002", QString()});
    }
    clock.advance(0);
    EXPECT_TRUE(applications.contains(1));
    EXPECT_TRUE(applications.contains(299));
    EXPECT_EQ(store.size(), settings().maxApplications);
}

TEST_F(LostApplicationsTest, NoUserPushesOutALossOfAnotherByItsCells)
{
    publish(1, {1, 2, 3});
    applications.add({1, "1001", QString()});
    clock.advance(1);
    publish(2, {4, 5, 6, 7});
    applications.add({2, "1002", QString()});
    clock.advance(1);
    publish(3, {8, 9, 10});
    applications.add({3, "1002", QString()});
    clock.advance(0);
    EXPECT_THAT(actions, ElementsAre("remove 2", "end 2"));
}

TEST_F(LostApplicationsTest, TheLatestLossIsKeptHoweverManyCellsItHas)
{
    publish(1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    applications.add({1});
    EXPECT_EQ(state(), State::InGrace);
}
