// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/cells/ServedCells.h"
#include "support/ManualClock.h"
#include "support/ServedRow.h"

using agent::ApplicationId;
using agent::ObjectId;
using agent::ServedCells;
using agent::healthTable::cellOf;
using agent::healthTable::Column;
using support::servedCell;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class ServedCellsTest : public testing::Test
{
protected:
    static constexpr qint64 graceMs = 10'000;
    static constexpr qint64 forgetMs = 86'400'000;

    inline static const ObjectId check{1, 97, 1, 98};
    inline static const ObjectId statusCell = cellOf(Column::Status, check);
    inline static const ObjectId summaryCell = cellOf(Column::Summary, check);
    inline static const ObjectId otherCell{1, 3, 6, 1, 4, 1, 32473, 5, 1};
    inline static const std::string lostRow =
        "3 No connection to the application since 2026-01-31 12:34:56 UTC.";

    ServedCellsTest()
    {
        const auto listen = [this](auto signal, auto listener) {
            QObject::connect(&cells, signal, &cells, listener);
        };
        listen(&ServedCells::statusWritten, [this](const ObjectId&, int status) {
            signalled.push_back("status " + std::to_string(status));
        });
        listen(&ServedCells::summaryWritten, [this](const ObjectId&, const std::string& summary) {
            signalled.push_back("summary " + summary);
        });
        listen(&ServedCells::checkCovered, [this](const ObjectId&) { signalled.push_back("covered"); });
        listen(&ServedCells::checkForgotten, [this](const ObjectId&) { signalled.push_back("forgotten"); });
        listen(&ServedCells::checkRemoved, [this](const ObjectId&) { signalled.push_back("removed"); });
        listen(&ServedCells::applicationGone, [this](ApplicationId application) {
            signalled.push_back("gone " + std::to_string(application));
        });
    }

    void publishRow(ApplicationId application, const ObjectId& row, int status, const std::string& summary)
    {
        cells.publish(application, cellOf(Column::Status, row), status);
        cells.publish(application, cellOf(Column::Summary, row), summary);
    }

    std::string served(const ObjectId& row = check) const { return support::servedRow(store, row); }

    agent::CellStore store;
    support::ManualClock clock;
    ServedCells cells{store, clock, {{graceMs, forgetMs, 3, 1000}, 60'000}};
    std::vector<std::string> signalled;
};

/// Application 1 owns two checks and another cell.
class LostApplication : public ServedCellsTest
{
protected:
    LostApplication()
    {
        publishRow(1, check, 0, "all is well");
        publishRow(1, otherCheck, 1, "so so");
        cells.publish(1, otherCell, 42);
        signalled.clear();
    }

    const ObjectId otherCheck{1, 97, 1, 99};
};

} // namespace

TEST_F(ServedCellsTest, SignalsEachWriteOfAStatusOrSummary)
{
    cells.publish(1, statusCell, 1);
    cells.publish(1, summaryCell, std::string("text"));
    cells.publish(1, summaryCell, std::string("text"));
    EXPECT_THAT(signalled, ElementsAre("status 1", "summary text", "summary text"));
}

TEST_F(ServedCellsTest, SignalsNeitherOtherCellsNorValuesOfTheWrongType)
{
    cells.publish(1, otherCell, 1);
    cells.publish(1, statusCell, std::string("text"));
    cells.publish(1, summaryCell, 1);
    EXPECT_THAT(signalled, IsEmpty());
    EXPECT_EQ(store.size(), 3u);
}

TEST_F(ServedCellsTest, ACheckIsRemovedWithItsStatusCell)
{
    cells.publish(1, statusCell, 1);
    cells.publish(1, summaryCell, std::string());
    signalled.clear();
    EXPECT_EQ(cells.unset(1, summaryCell), 1u);
    EXPECT_THAT(signalled, IsEmpty());
    EXPECT_EQ(cells.unset(1, ObjectId()), 1u);
    EXPECT_THAT(signalled, ElementsAre("removed"));
}

TEST_F(ServedCellsTest, NamesTheFormerOwnerIfItIsConnected)
{
    EXPECT_EQ(cells.publish(1, otherCell, 1), std::nullopt);
    EXPECT_EQ(cells.publish(1, otherCell, 2), std::nullopt);
    EXPECT_EQ(cells.publish(2, otherCell, 3), std::optional<ApplicationId>(1));
}

TEST_F(ServedCellsTest, AStaleCheckReadsUnknownUntilItIsUpdated)
{
    publishRow(1, check, 0, "all is well");
    signalled.clear();
    clock.advance(60'000);
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:34:56 UTC.");
    EXPECT_THAT(signalled, ElementsAre("covered"));
    publishRow(1, check, 0, "all is well");
    EXPECT_EQ(served(), "0 all is well");
}

TEST_F(ServedCellsTest, AWithdrawnCheckDoesNotTurnStale)
{
    publishRow(1, check, 0, "all is well");
    cells.unset(1, ObjectId());
    signalled.clear();
    clock.advance(60'000);
    EXPECT_THAT(signalled, IsEmpty());
}

TEST_F(LostApplication, KeepsItsValuesWithinTheGracePeriod)
{
    EXPECT_TRUE(cells.lose({1}));
    clock.advance(graceMs - 1);
    EXPECT_EQ(served(), "0 all is well");
    EXPECT_THAT(signalled, IsEmpty());
}

TEST_F(LostApplication, ReadsUnknownAfterTheGracePeriodAndKeepsItsOtherValues)
{
    cells.lose({1});
    clock.advance(graceMs);
    EXPECT_EQ(served(), lostRow);
    EXPECT_EQ(served(otherCheck), lostRow);
    EXPECT_EQ(servedCell(store, otherCell), "42");
    EXPECT_THAT(signalled, ElementsAre("covered", "covered"));
}

TEST_F(LostApplication, IsForgottenWithAllItsCells)
{
    cells.lose({1});
    clock.advance(forgetMs - 1);
    EXPECT_EQ(store.size(), 5u);
    signalled.clear();
    clock.advance(1);
    EXPECT_EQ(store.size(), 0u);
    EXPECT_THAT(signalled, ElementsAre("forgotten", "forgotten", "removed", "removed", "gone 1"));
}

TEST_F(LostApplication, LeavesNothingIfItWithdrewItsCells)
{
    cells.unset(1, ObjectId());
    signalled.clear();
    EXPECT_FALSE(cells.lose({1}));
    clock.advance(100'000);
    EXPECT_THAT(signalled, IsEmpty());
}

TEST_F(LostApplication, IsReplacedAtOnceByPublishedValues)
{
    cells.lose({1});
    clock.advance(20'000);
    publishRow(2, check, 2, "bad");
    EXPECT_EQ(served(), "2 bad");
    EXPECT_EQ(served(otherCheck), lostRow);
}

TEST_F(LostApplication, NeverReadsUnknownIfItReturnsWithinTheGracePeriod)
{
    cells.lose({1});
    clock.advance(5'000);
    publishRow(2, check, 0, "all is well");
    publishRow(2, otherCheck, 0, "all is well");
    cells.publish(2, otherCell, 43);
    EXPECT_EQ(signalled.back(), "gone 1");
    clock.advance(30'000);
    EXPECT_EQ(served(), "0 all is well");
    EXPECT_EQ(std::count(signalled.begin(), signalled.end(), "covered"), 0);
}

TEST_F(LostApplication, LosesItsOtherCellsOneGracePeriodAfterTheFirstReturned)
{
    cells.lose({1});
    clock.advance(20'000);
    publishRow(2, check, 0, "all is well");
    clock.advance(graceMs - 1);
    EXPECT_EQ(served(otherCheck), lostRow);
    clock.advance(1);
    EXPECT_EQ(served(otherCheck), "- -");
    EXPECT_EQ(served(), "0 all is well");
    EXPECT_EQ(signalled.back(), "gone 1");
}

TEST_F(LostApplication, IsNotNamedAsTheFormerOwner)
{
    cells.lose({1});
    EXPECT_EQ(cells.publish(2, statusCell, 0), std::nullopt);
}

TEST_F(LostApplication, DoesNotAffectARowTakenOverByAnotherApplication)
{
    publishRow(2, check, 1, "mine now");
    cells.lose({1});
    clock.advance(graceMs);
    EXPECT_EQ(served(), "1 mine now");
    EXPECT_EQ(served(otherCheck), lostRow);
}

TEST_F(LostApplication, IsNotAffectedByAnotherApplicationsUnset)
{
    cells.lose({1});
    EXPECT_EQ(cells.unset(2, ObjectId()), 0u);
    EXPECT_EQ(served(), "0 all is well");
}

TEST_F(LostApplication, KeepsItsOwnTimesIfItsSuccessorIsLostToo)
{
    cells.lose({1});
    clock.advance(4'000);
    publishRow(2, check, 0, "back");
    cells.lose({2});
    clock.advance(6'000);
    EXPECT_EQ(served(otherCheck), lostRow);
    EXPECT_EQ(served(), "0 back");
    clock.advance(4'000);
    EXPECT_EQ(served(), "3 No connection to the application since 2026-01-31 12:35:00 UTC.");
    EXPECT_EQ(served(otherCheck), "- -");
    publishRow(3, check, 1, "back again");
    EXPECT_EQ(served(), "1 back again");
    EXPECT_EQ(std::count(signalled.begin(), signalled.end(), "gone 1"), 1);
    EXPECT_EQ(std::count(signalled.begin(), signalled.end(), "gone 2"), 1);
}

TEST_F(LostApplication, ReadsLostRatherThanStale)
{
    clock.advance(30'000);
    cells.lose({1});
    clock.advance(graceMs);
    const std::string row = "3 No connection to the application since 2026-01-31 12:35:26 UTC.";
    EXPECT_EQ(served(), row);
    clock.advance(60'000);
    EXPECT_EQ(served(), row);
}

TEST_F(LostApplication, ReadsStaleUntilTheGracePeriodIsOver)
{
    clock.advance(60'000);
    cells.lose({1});
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:34:56 UTC.");
    clock.advance(graceMs);
    EXPECT_EQ(served(), "3 No connection to the application since 2026-01-31 12:35:56 UTC.");
}

// --- After a restart of the agent

TEST_F(ServedCellsTest, ARestoredCheckReadsUnknownSinceItsLoss)
{
    cells.restore({7}, clock.nowUtc().addMSecs(-graceMs), {{check, 1, "so so"}});
    EXPECT_EQ(served(), "3 No connection to the application since 2026-01-31 12:34:46 UTC.");
    EXPECT_THAT(cells.checksOf(7), testing::SizeIs(1));
    publishRow(8, check, 0, "back");
    EXPECT_EQ(served(), "0 back");
}

TEST_F(ServedCellsTest, ACheckRestoredWithinItsGracePeriodGetsAllOfIt)
{
    cells.restore({7}, clock.nowUtc().addMSecs(-1), {{check, 1, "so so"}});
    EXPECT_EQ(served(), "1 so so");
    clock.advance(graceMs);
    EXPECT_EQ(served().substr(0, 1), "3");
}

TEST_F(ServedCellsTest, ARestoredCheckIsForgotten)
{
    cells.restore({7}, clock.nowUtc().addMSecs(-graceMs), {{check, 1, "so so"}});
    clock.advance(forgetMs);
    EXPECT_EQ(served(), "- -");
}

// Each restart of the agent gave a lost application the whole time once more.
TEST_F(ServedCellsTest, ARestoredCheckHasOnlyTheRestOfItsTime)
{
    cells.restore({7}, clock.nowUtc().addMSecs(-forgetMs + 1000), {{check, 1, "so so"}});
    clock.advance(999);
    EXPECT_EQ(served().substr(0, 1), "3");
    clock.advance(1);
    EXPECT_EQ(served(), "- -");
}

TEST_F(ServedCellsTest, ACheckRestoredFromTheFutureHasAllOfItsTime)
{
    cells.restore({7}, clock.nowUtc().addMSecs(forgetMs), {{check, 1, "so so"}});
    clock.advance(forgetMs - 1);
    EXPECT_EQ(served().substr(0, 1), "3");
    clock.advance(1);
    EXPECT_EQ(served(), "- -");
}

// Such a check vanished without a word: managers kept its alarm.
TEST_F(ServedCellsTest, ARestoredCheckThatIsTooOldIsForgottenAtOnce)
{
    cells.restore({7}, clock.nowUtc().addMSecs(-forgetMs), {{check, 2, "down"}});
    EXPECT_THAT(signalled, ElementsAre("covered", "forgotten", "removed", "gone 7"));
    EXPECT_EQ(served(), "- -");
}

// The agent took 2.5 GB for 90 MB of summaries, as it saved them several times over.
TEST_F(ServedCellsTest, ALongSummaryIsCutInWhatIsKept)
{
    publishRow(1, check, 0, std::string(60'000, 'x'));
    ASSERT_THAT(cells.checksOf(1), testing::SizeIs(1));
    EXPECT_EQ(cells.checksOf(1).front().summary, std::string(255, 'x'));
    publishRow(1, check, 0, std::string(254, 'x') + "ü and more");
    EXPECT_EQ(cells.checksOf(1).front().summary, std::string(254, 'x')) << "no half characters";
    EXPECT_EQ(served(), "0 " + std::string(254, 'x') + "ü and more");
}

TEST_F(ServedCellsTest, OnlyRowsThatFitAreRestored)
{
    agent::ObjectId longKeys{200};
    longKeys.insert(longKeys.end(), 200, 97);
    longKeys.push_back(0);
    cells.restore({7}, clock.nowUtc(),
                  {{{1, 97}, 1, "one key"}, {check, 9, "no status"}, {longKeys, 1, "no SNMP identifier"}});
    EXPECT_EQ(store.size(), 0u);
}
