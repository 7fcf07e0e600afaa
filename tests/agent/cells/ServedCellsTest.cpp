// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/cells/ServedCells.h"
#include "support/ManualClock.h"

using agent::ApplicationId;
using agent::ObjectId;
using agent::ServedCells;
using agent::healthTable::cellOf;
using agent::healthTable::Column;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const ObjectId check{1, 97, 1, 98};
const ObjectId statusCell = cellOf(Column::Status, check);
const ObjectId summaryCell = cellOf(Column::Summary, check);
const ObjectId otherCell{1, 3, 6, 1, 4, 1, 32473, 5, 1};

class ServedCellsTest : public testing::Test
{
protected:
    ServedCellsTest()
    {
        QObject::connect(&cells, &ServedCells::statusWritten, &cells, [this](const ObjectId&, int status) {
            told.push_back("status " + std::to_string(status));
        });
        QObject::connect(
            &cells, &ServedCells::summaryWritten, &cells,
            [this](const ObjectId&, const std::string& summary) { told.push_back("summary " + summary); });
        QObject::connect(&cells, &ServedCells::checkCovered, &cells, [this](const ObjectId& id) {
            EXPECT_EQ(served(id).substr(0, 4), "3 No") << "not served yet when it is told";
            told.push_back("overruled");
        });
        QObject::connect(&cells, &ServedCells::checkRemoved, &cells,
                         [this](const ObjectId&) { told.push_back("removed"); });
    }

    static ServedCells::Settings settings()
    {
        ServedCells::Settings settings;
        settings.graceMs = 10'000;
        settings.forgetMs = 86'400'000;
        settings.staleAfterMs = 60'000;
        settings.maxLost = 3;
        return settings;
    }

    void publishRow(ApplicationId owner, const ObjectId& row, int status, const std::string& summary)
    {
        cells.publish(owner, cellOf(Column::Status, row), status);
        cells.publish(owner, cellOf(Column::Summary, row), summary);
    }

    /// The row as a manager reads it: "1 text".
    std::string served(const ObjectId& row = check) const
    {
        return textOf(cellOf(Column::Status, row)) + ' ' + textOf(cellOf(Column::Summary, row));
    }

    std::string textOf(const ObjectId& id) const
    {
        const agent::Cell* cell = store.find(id);
        if (!cell)
            return "-";
        const int* number = std::get_if<int>(&cell->served());
        return number ? std::to_string(*number) : std::get<std::string>(cell->served());
    }

    agent::CellStore store;
    support::ManualClock clock;
    ServedCells cells{store, clock, settings()};
    std::vector<std::string> told;
};

const std::string lostRow = "3 No connection to the application since 2026-01-31 12:34:56 UTC.";

class LostConnection : public ServedCellsTest
{
protected:
    LostConnection()
    {
        QObject::connect(&cells, &ServedCells::applicationGone, &cells,
                         [this](ApplicationId owner) { gone.push_back(owner); });
        publishRow(1, check, 0, "all is well");
        publishRow(1, otherCheck, 1, "so so");
        cells.publish(1, otherCell, 42);
        told.clear();
    }

    const ObjectId otherCheck{1, 97, 1, 99};
    std::vector<ApplicationId> gone;
};

class Silence : public ServedCellsTest
{
};

} // namespace

TEST_F(ServedCellsTest, EveryWriteOfAStatusOrSummaryIsTold)
{
    cells.publish(1, statusCell, 1);
    cells.publish(1, summaryCell, std::string("text"));
    cells.publish(1, summaryCell, std::string("text"));
    EXPECT_THAT(told, ElementsAre("status 1", "summary text", "summary text"));
}

TEST_F(ServedCellsTest, OtherCellsAndValuesOfTheWrongTypeAreNotTold)
{
    cells.publish(1, otherCell, 1);
    cells.publish(1, statusCell, std::string("text"));
    cells.publish(1, summaryCell, 1);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(store.size(), 3u);
}

TEST_F(ServedCellsTest, ACheckIsRemovedWithItsStatusCell)
{
    cells.publish(1, statusCell, 1);
    cells.publish(1, summaryCell, std::string());
    told.clear();
    EXPECT_EQ(cells.unset(1, summaryCell), 1u);
    EXPECT_THAT(told, IsEmpty());
    EXPECT_EQ(cells.unset(1, ObjectId()), 1u);
    EXPECT_THAT(told, ElementsAre("removed"));
}

TEST_F(ServedCellsTest, TheConnectedOwnerOfACellThatIsTakenOverIsNamed)
{
    EXPECT_EQ(cells.publish(1, otherCell, 1), std::nullopt);
    EXPECT_EQ(cells.publish(1, otherCell, 2), std::nullopt);
    EXPECT_EQ(cells.publish(2, otherCell, 3), std::optional<ApplicationId>(1));
}

TEST_F(LostConnection, LeavesItsCellsAsTheyAreForATimeOfGrace)
{
    EXPECT_TRUE(cells.lose(1));
    clock.advance(9'999);
    EXPECT_EQ(served(), "0 all is well");
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(LostConnection, TurnsItsHealthChecksUnknownAfterTheGraceAndKeepsOtherValues)
{
    cells.lose(1);
    clock.advance(10'000);
    EXPECT_EQ(served(), lostRow);
    EXPECT_EQ(served(otherCheck), lostRow);
    EXPECT_EQ(textOf(otherCell), "42");
    EXPECT_THAT(told, ElementsAre("overruled", "overruled"));
}

TEST_F(LostConnection, IsForgottenWithAllItsCells)
{
    cells.lose(1);
    clock.advance(86'399'999);
    EXPECT_EQ(store.size(), 5u);
    told.clear();
    clock.advance(1);
    EXPECT_EQ(store.size(), 0u);
    EXPECT_THAT(told, ElementsAre("removed", "removed"));
    EXPECT_THAT(gone, ElementsAre(1));
}

TEST_F(LostConnection, IsNeverForgottenWhenThatIsTheSetting)
{
    ServedCells::Settings lasting = settings();
    lasting.forgetMs = agent::DelayQueue<ApplicationId>::never;
    agent::CellStore otherStore;
    ServedCells otherCells(otherStore, clock, lasting);
    otherCells.publish(1, statusCell, 1);
    otherCells.lose(1);
    clock.advance(Q_INT64_C(86'400'000) * 1000);
    EXPECT_EQ(otherStore.size(), 1u);
}

TEST_F(LostConnection, WithoutCellsLeavesNothing)
{
    cells.unset(1, ObjectId());
    EXPECT_FALSE(cells.lose(1));
    clock.advance(100'000);
    EXPECT_EQ(store.size(), 0u);
    EXPECT_THAT(gone, IsEmpty());
}

TEST_F(LostConnection, IsReplacedAtOnceByWhatIsPublishedAgain)
{
    cells.lose(1);
    clock.advance(20'000);
    publishRow(2, check, 2, "bad");
    EXPECT_EQ(served(), "2 bad");
    EXPECT_EQ(served(otherCheck), lostRow);
}

TEST_F(LostConnection, ThatIsReplacedWithinTheGraceNeverReadsUnknown)
{
    cells.lose(1);
    clock.advance(5'000);
    publishRow(2, check, 0, "all is well");
    publishRow(2, otherCheck, 0, "all is well");
    cells.publish(2, otherCell, 43);
    clock.advance(30'000);
    EXPECT_EQ(served(), "0 all is well");
    EXPECT_THAT(gone, ElementsAre(1));
    EXPECT_EQ(std::count(told.begin(), told.end(), "overruled"), 0);
}

TEST_F(LostConnection, LosesWhatHasNotComeBackAGraceAfterTheFirstPublication)
{
    cells.lose(1);
    clock.advance(20'000);
    publishRow(2, check, 0, "all is well");
    clock.advance(9'000);
    cells.publish(2, otherCell, 43); // does not begin the time anew
    clock.advance(999);
    EXPECT_EQ(served(otherCheck), lostRow);
    EXPECT_THAT(gone, IsEmpty());
    clock.advance(1);
    EXPECT_EQ(served(otherCheck), "- -");
    EXPECT_EQ(served(), "0 all is well");
    EXPECT_EQ(textOf(otherCell), "43");
    EXPECT_THAT(gone, ElementsAre(1));
}

TEST_F(LostConnection, IsGoneAsSoonAsTheLastOfItsCellsHasComeBack)
{
    cells.lose(1);
    publishRow(2, check, 0, "all is well");
    publishRow(2, otherCheck, 0, "all is well");
    EXPECT_THAT(gone, IsEmpty());
    cells.publish(2, otherCell, 43);
    EXPECT_THAT(gone, ElementsAre(1));
}

TEST_F(LostConnection, IsNotNamedAsTheOneFromWhichACellWasTaken)
{
    cells.lose(1);
    EXPECT_EQ(cells.publish(2, statusCell, 0), std::nullopt);
}

TEST_F(LostConnection, GivesTheRowUpWithItsStatusCell)
{
    cells.lose(1);
    clock.advance(10'000);
    cells.publish(2, statusCell, 1);
    EXPECT_EQ(served(), "1 all is well") << "the summary is the last one that was published";
    cells.publish(2, summaryCell, std::string("careful"));
    EXPECT_EQ(served(), "1 careful");
}

TEST_F(LostConnection, KeepsTheStatusUnknownWhenOnlyTheSummaryComesBack)
{
    cells.lose(1);
    clock.advance(10'000);
    cells.publish(2, summaryCell, std::string("careful"));
    EXPECT_EQ(served(), "3 careful");
}

TEST_F(LostConnection, LeavesTheRowOfAnotherApplicationAlone)
{
    publishRow(2, check, 1, "mine now");
    cells.lose(1);
    clock.advance(10'000);
    EXPECT_EQ(served(), "1 mine now");
    EXPECT_EQ(served(otherCheck), lostRow);
}

TEST_F(LostConnection, IsNotReachedByTheUnsetOfAnotherApplication)
{
    cells.lose(1);
    EXPECT_EQ(cells.unset(2, ObjectId()), 0u);
    EXPECT_EQ(served(), "0 all is well");
}

TEST_F(LostConnection, MayHappenAgainBeforeTheFirstOneIsOver)
{
    cells.lose(1);
    clock.advance(4'000);
    publishRow(2, check, 0, "back");
    cells.lose(2);
    clock.advance(6'000);
    EXPECT_EQ(served(otherCheck), lostRow);
    EXPECT_EQ(served(), "0 back");
    clock.advance(4'000);
    EXPECT_EQ(served(), "3 No connection to the application since 2026-01-31 12:35:00 UTC.");
    EXPECT_EQ(served(otherCheck), "- -") << "had its grace after the first publication";
    publishRow(3, check, 1, "back again");
    EXPECT_EQ(served(), "1 back again");
    EXPECT_THAT(gone, ElementsAre(1, 2));
}

TEST_F(LostConnection, IsForgottenWhileItIsBeingReplaced)
{
    cells.lose(1);
    clock.advance(86'395'000);
    publishRow(2, check, 0, "back");
    clock.advance(5'000);
    EXPECT_EQ(served(otherCheck), "- -");
    EXPECT_EQ(served(), "0 back");
    clock.advance(5'000);
    EXPECT_EQ(served(), "0 back");
    EXPECT_THAT(gone, ElementsAre(1));
}

TEST_F(LostConnection, MakesRoomForLaterOnesTheLongestLostFirst)
{
    for (const ApplicationId owner : {2u, 3u, 4u}) {
        publishRow(owner, {1, 100, 1, static_cast<unsigned int>(owner)}, 0, "well");
    }
    cells.lose(3);
    clock.advance(1);
    cells.lose(1);
    clock.advance(1);
    cells.lose(4);
    EXPECT_THAT(gone, IsEmpty());
    cells.lose(2);
    EXPECT_THAT(gone, ElementsAre(3));
    EXPECT_EQ(served({1, 100, 1, 3}), "- -");
    EXPECT_EQ(served(), "0 all is well");
}

TEST_F(LostConnection, MakesRoomWhenAllOfThemKeepTooManyCells)
{
    ServedCells::Settings narrow = settings();
    narrow.maxLostCells = 5;
    agent::CellStore otherStore;
    ServedCells otherCells(otherStore, clock, narrow);
    for (unsigned int cell = 0; cell < 9; ++cell)
        otherCells.publish(cell / 3, {1, cell}, 1);
    otherCells.lose(0);
    EXPECT_EQ(otherStore.size(), 9u);
    clock.advance(1);
    otherCells.lose(1);
    EXPECT_EQ(otherStore.size(), 6u);
    EXPECT_EQ(otherStore.countOf(0), 0u);
}

TEST_F(LostConnection, OfAnApplicationThatPublishedTheColumnItselfDoesNoHarm)
{
    cells.publish(5, agent::healthTable::column(Column::Status), 1);
    cells.lose(5);
    clock.advance(10'000);
    EXPECT_EQ(textOf(agent::healthTable::column(Column::Status)), "1");
}

TEST_F(Silence, TurnsAHealthCheckUnknownWithTheTimeOfItsLastUpdate)
{
    clock.advance(4'000);
    publishRow(1, check, 0, "all is well");
    told.clear();
    clock.advance(59'999);
    EXPECT_EQ(served(), "0 all is well");
    clock.advance(1);
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:35:00 UTC.");
    EXPECT_THAT(told, ElementsAre("overruled"));
}

TEST_F(Silence, EndsWithTheNextUpdate)
{
    publishRow(1, check, 0, "all is well");
    clock.advance(70'000);
    publishRow(1, check, 1, "careful");
    EXPECT_EQ(served(), "1 careful");
    clock.advance(60'000);
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:36:06 UTC.");
}

TEST_F(Silence, IsNotEndedByASummaryAlone)
{
    publishRow(1, check, 0, "all is well");
    clock.advance(30'000);
    cells.publish(1, summaryCell, std::string("still here"));
    clock.advance(30'000);
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:34:56 UTC.");
    cells.publish(1, summaryCell, std::string("and here"));
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:34:56 UTC.");
}

TEST_F(Silence, OfARemovedCheckIsNotNoticed)
{
    publishRow(1, check, 0, "all is well");
    cells.unset(1, ObjectId());
    told.clear();
    clock.advance(60'000);
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(Silence, GivesWayToTheLossOfTheConnection)
{
    publishRow(1, check, 0, "all is well");
    clock.advance(30'000);
    cells.lose(1);
    clock.advance(10'000);
    const std::string lost = "3 No connection to the application since 2026-01-31 12:35:26 UTC.";
    EXPECT_EQ(served(), lost);
    clock.advance(60'000);
    EXPECT_EQ(served(), lost);
}

TEST_F(Silence, BeforeALossIsReplacedByIt)
{
    publishRow(1, check, 0, "all is well");
    clock.advance(60'000);
    cells.lose(1);
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:34:56 UTC.");
    clock.advance(10'000);
    EXPECT_EQ(served(), "3 No connection to the application since 2026-01-31 12:35:56 UTC.");
}

TEST_F(Silence, OfSettingZeroIsNeverNoticed)
{
    agent::CellStore otherStore;
    ServedCells otherCells(otherStore, clock, ServedCells::Settings());
    otherCells.publish(1, statusCell, 1);
    clock.advance(1'000'000'000);
    EXPECT_EQ(std::get<int>(otherStore.find(statusCell)->served()), 1);
}
