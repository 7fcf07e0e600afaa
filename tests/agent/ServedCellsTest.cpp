#include <gmock/gmock.h>

#include "agent/ServedCells.h"
#include "support/ManualClock.h"

using agent::ObjectId;
using agent::OwnerId;
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
        QObject::connect(&cells, &ServedCells::statusWritten, &cells, [this](const ObjectId& id, int status) {
            EXPECT_EQ(id, check);
            told.push_back("status " + std::to_string(status));
        });
        QObject::connect(
            &cells, &ServedCells::summaryWritten, &cells,
            [this](const ObjectId&, const std::string& summary) { told.push_back("summary " + summary); });
        QObject::connect(&cells, &ServedCells::checkRemoved, &cells,
                         [this](const ObjectId&) { told.push_back("removed"); });
    }

    agent::CellStore store;
    support::ManualClock clock;
    ServedCells cells{store, clock};
    std::vector<std::string> told;
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
    EXPECT_EQ(cells.publish(2, otherCell, 3), std::optional<OwnerId>(1));
}
