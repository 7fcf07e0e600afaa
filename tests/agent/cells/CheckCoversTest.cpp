// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/cells/CheckCovers.h"
#include "support/ManualClock.h"
#include "support/ServedRow.h"

using agent::ApplicationId;
using agent::CheckCovers;
using agent::LostApplications;
using agent::ObjectId;
using agent::healthTable::cellOf;
using agent::healthTable::Column;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct NoActions : LostApplications::Actions
{
    void cover(ApplicationId, const QDateTime&) override {}
    void remove(ApplicationId, size_t) override {}
    void end(ApplicationId) override {}
};

/// Application 1 has published the row "0 well".
class CheckCoversTest : public testing::Test
{
protected:
    using State = CheckCovers::State;

    static constexpr qint64 staleAfterMs = 60'000;
    inline static const ObjectId check{1, 97, 1, 98};
    inline static const ObjectId otherCheck{1, 97, 1, 99};
    inline static const ObjectId result{1, 97, 1, 98, 1, 109};
    inline static const ObjectId otherResult{1, 97, 1, 99, 1, 109};

    inline static const std::string staleRow = "3 No update since 2026-01-31 12:34:56 UTC.";
    inline static const std::string lostSummary =
        "No connection to the application since 2026-01-31 12:34:56 UTC.";
    inline static const std::string lostRow = "3 " + lostSummary;

    CheckCoversTest()
    {
        writeStatus(1, 0);
        writeSummary(1, "well");
    }

    void writeStatus(ApplicationId application, int status, const ObjectId& row = check)
    {
        store.set(cellOf(Column::Status, row), status, application);
        covers.handleStatusWritten(row);
    }

    void writeSummary(ApplicationId application, const std::string& summary, const ObjectId& row = check)
    {
        store.set(cellOf(Column::Summary, row), summary, application);
        covers.handleSummaryWritten(row);
    }

    void writeResult(ApplicationId application, const ObjectId& row)
    {
        writeResultCell(application, agent::resultTable().cellOf(Column::Status, row), 0);
        writeResultCell(application, agent::resultTable().cellOf(Column::Summary, row), std::string("fine"));
    }

    void writeResultCell(ApplicationId application, const ObjectId& id, const agent::CellValue& value)
    {
        store.set(id, value, application);
        covers.handleResultWritten(id);
    }

    std::string servedResult(const ObjectId& row = result) const
    {
        return support::servedCell(store, agent::resultTable().cellOf(Column::Status, row)) + ' ' +
               support::servedCell(store, agent::resultTable().cellOf(Column::Summary, row));
    }

    void removeRow()
    {
        store.removeAllOf(1);
        covers.handleStatusRemoved(check);
    }

    /// Application 1 is lost, and its grace period is over.
    void loseAndCover()
    {
        lost.add({1});
        covers.handleGraceOver(1, clock.nowUtc());
    }

    std::string served(const ObjectId& row = check) const { return support::servedRow(store, row); }

    support::ManualClock clock;
    agent::CellStore store;
    NoActions noActions;
    LostApplications lost{store, clock, {10'000, 86'400'000, 3, 9}, noActions};
    std::vector<ObjectId> covered;
    CheckCovers covers{store, lost, clock, staleAfterMs, [this](const ObjectId& row) {
                           EXPECT_EQ(served(row).substr(0, 4), "3 No") << "the store must be up to date";
                           covered.push_back(row);
                       }};
};

} // namespace

// --- AsPublished

TEST_F(CheckCoversTest, ARowReadsAsPublishedWhileItIsUpdated)
{
    clock.advance(staleAfterMs - 1);
    writeStatus(1, 1);
    clock.advance(staleAfterMs - 1);
    EXPECT_EQ(covers.stateOf(check), State::AsPublished);
    EXPECT_EQ(served(), "1 well");
    EXPECT_THAT(covered, IsEmpty());
}

TEST_F(CheckCoversTest, ARowTurnsStaleWithTheTimeOfItsLastUpdate)
{
    clock.advance(staleAfterMs);
    EXPECT_EQ(covers.stateOf(check), State::Stale);
    EXPECT_EQ(served(), staleRow);
    EXPECT_THAT(covered, ElementsAre(check));
}

TEST_F(CheckCoversTest, ASummaryAloneIsNoUpdate)
{
    clock.advance(staleAfterMs / 2);
    writeSummary(1, "still here");
    clock.advance(staleAfterMs / 2);
    EXPECT_EQ(served(), staleRow);
}

TEST_F(CheckCoversTest, ARemovedRowDoesNotTurnStale)
{
    removeRow();
    clock.advance(staleAfterMs);
    EXPECT_THAT(covered, IsEmpty());
}

TEST_F(CheckCoversTest, NoRowTurnsStaleIfStaleAfterIsOff)
{
    agent::CellStore otherStore;
    CheckCovers others(otherStore, lost, clock, agent::UpdateWatch::never, [](const ObjectId&) {});
    otherStore.set(cellOf(Column::Status, check), 1, 1);
    others.handleStatusWritten(check);
    clock.advance(1'000'000'000);
    EXPECT_EQ(others.stateOf(check), State::AsPublished);
}

TEST_F(CheckCoversTest, ARowTurnsLostWithTheTimeOfTheLoss)
{
    loseAndCover();
    EXPECT_EQ(covers.stateOf(check), State::Lost);
    EXPECT_EQ(served(), lostRow);
    EXPECT_THAT(covered, ElementsAre(check));
}

TEST_F(CheckCoversTest, ALossCoversOnlyRowsOfTheLostApplication)
{
    writeStatus(2, 1, otherCheck);
    writeSummary(2, "alive", otherCheck);
    loseAndCover();
    EXPECT_EQ(served(), lostRow);
    EXPECT_EQ(served(otherCheck), "1 alive");
}

TEST_F(CheckCoversTest, ALossLeavesTheSummaryOfAConnectedApplication)
{
    writeSummary(2, "No loss here");
    loseAndCover();
    EXPECT_EQ(served(), "3 No loss here");
}

TEST_F(CheckCoversTest, ALossIgnoresAValueInPlaceOfTheColumn)
{
    const ObjectId column = agent::healthTable::column(Column::Status);
    store.set(column, 1, 1);
    loseAndCover();
    EXPECT_EQ(support::servedCell(store, column), "1");
}

// --- Stale

TEST_F(CheckCoversTest, AStaleRowReadsAsPublishedAfterAnUpdateAndCanTurnStaleAgain)
{
    clock.advance(staleAfterMs + 10'000);
    writeStatus(1, 1);
    writeSummary(1, "careful");
    EXPECT_EQ(covers.stateOf(check), State::AsPublished);
    EXPECT_EQ(served(), "1 careful");
    clock.advance(staleAfterMs);
    EXPECT_EQ(served(), "3 No update since 2026-01-31 12:36:06 UTC.");
}

TEST_F(CheckCoversTest, AStaleRowStaysStaleAfterASummaryAlone)
{
    clock.advance(staleAfterMs);
    writeSummary(1, "and here");
    EXPECT_EQ(covers.stateOf(check), State::Stale);
    EXPECT_EQ(served(), staleRow);
}

TEST_F(CheckCoversTest, AStaleRowOfALostApplicationShowsANewSummary)
{
    clock.advance(staleAfterMs);
    lost.add({1});
    writeSummary(2, "careful");
    EXPECT_EQ(served(), "3 careful");
}

TEST_F(CheckCoversTest, AStaleRowTurnsLost)
{
    clock.advance(staleAfterMs);
    loseAndCover();
    EXPECT_EQ(covers.stateOf(check), State::Lost);
    EXPECT_EQ(served(), "3 No connection to the application since 2026-01-31 12:35:56 UTC.");
}

TEST_F(CheckCoversTest, AStaleRowEndsWhenItIsRemoved)
{
    clock.advance(staleAfterMs);
    removeRow();
    EXPECT_EQ(covers.stateOf(check), State::AsPublished);
    writeStatus(2, 1);
    EXPECT_EQ(served(), "1 -");
}

TEST_F(CheckCoversTest, ASummaryLeftFromAStaleRowIsUncoveredWhenItIsWritten)
{
    clock.advance(staleAfterMs);
    store.unsetTree(cellOf(Column::Status, check), 1);
    covers.handleStatusRemoved(check);
    EXPECT_EQ(served(), "- No update since 2026-01-31 12:34:56 UTC.");
    writeSummary(1, "alone");
    EXPECT_EQ(served(), "- alone");
}

// --- Lost

TEST_F(CheckCoversTest, ALostRowReadsAsPublishedOnceItsStatusReturns)
{
    loseAndCover();
    writeStatus(2, 1);
    EXPECT_EQ(covers.stateOf(check), State::AsPublished);
    EXPECT_EQ(served(), "1 well") << "the last published summary, never the text about the loss";
}

TEST_F(CheckCoversTest, ALostRowStaysUnknownIfOnlyItsSummaryReturns)
{
    loseAndCover();
    writeSummary(2, "careful");
    EXPECT_EQ(covers.stateOf(check), State::Lost);
    EXPECT_EQ(served(), "3 careful");
}

TEST_F(CheckCoversTest, ALostRowDoesNotTurnStale)
{
    clock.advance(staleAfterMs / 2);
    loseAndCover();
    const std::string row = served();
    clock.advance(staleAfterMs);
    EXPECT_EQ(covers.stateOf(check), State::Lost);
    EXPECT_EQ(served(), row);
}

// --- Results of metrics

TEST_F(CheckCoversTest, TheResultsOfAStaleCheckReadUnknownUntilItsNextUpdate)
{
    writeResult(1, result);
    writeResult(1, otherResult);
    clock.advance(staleAfterMs);
    EXPECT_EQ(servedResult(), staleRow);
    EXPECT_EQ(servedResult(otherResult), "0 fine") << "another check";
    writeStatus(1, 0);
    EXPECT_EQ(servedResult(), "0 fine");
}

TEST_F(CheckCoversTest, AStaleCheckLeavesResultsOfAnotherApplication)
{
    writeResult(2, result);
    clock.advance(staleAfterMs);
    EXPECT_EQ(servedResult(), "0 fine");
}

TEST_F(CheckCoversTest, AllResultsOfALostApplicationReadUnknownUntilTheyReturn)
{
    writeResult(1, result);
    writeResult(1, otherResult);
    loseAndCover();
    EXPECT_EQ(servedResult(), lostRow);
    EXPECT_EQ(servedResult(otherResult), lostRow) << "without a row of its check";
    writeResult(2, result);
    EXPECT_EQ(servedResult(), "0 fine");
    EXPECT_EQ(servedResult(otherResult), lostRow);
}

TEST_F(CheckCoversTest, PerformanceDataKeepTheirLastValues)
{
    const ObjectId value = agent::below(agent::vigilMibRoot(), {4, 1, 2, 1, 97, 1, 98, 1, 109});
    store.set(value, std::string("25.5"), 1);
    clock.advance(staleAfterMs);
    loseAndCover();
    EXPECT_EQ(support::servedCell(store, value), "25.5");
}
