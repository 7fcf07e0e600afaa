// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/ManagementCallbackAdapter.h"

#include <vigil/Oid.h>

#include <stdexcept>

#include "snmp/SnmpMgmFuncTable.h"
#include "support/LibraryTest.h"
#include "support/RecordingManagementHandler.h"

using support::cell;
using support::set;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

class ManagementCallbackAdapterTest : public support::LibraryTest
{
protected:
    Oid managementCell(int column) const
    {
        return Oid::fromStdString("1.3.6.1.4.1.32473." + cell(5, column, row));
    }

    const std::vector<std::string> row = {"app", "hc"};

    support::Recorder recorder;
    support::RecordingManagementHandler handler{recorder};
    SnmpMgmFuncTable table;
    ManagementCallbackAdapter adapter{&handler, &table};
};

TEST_F(ManagementCallbackAdapterTest, Setting2RunsTheFunctionOnceAndResetsTheCellTo1)
{
    start();
    for (const int column : {1, 2, 3, 4}) {
        adapter.callbackValueChanged(managementCell(column), 2);
        EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, column, row), 1)}));
    }
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"function 1", "function 2", "function 3", "function 4"}));
}

TEST_F(ManagementCallbackAdapterTest, AnyOtherNumberOnlyResetsTheCell)
{
    start();
    for (const int value : {5, 1, 0, 3, -2}) {
        adapter.callbackValueChanged(managementCell(3), value);
        EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 3, row), 1)}));
    }
    EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST_F(ManagementCallbackAdapterTest, Setting2OnAnyOtherCellOnlyResetsIt)
{
    start();
    adapter.callbackValueChanged(managementCell(5), 2);
    adapter.callbackValueChanged(managementCell(6), 2);
    adapter.callbackValueChanged(Oid::fromStdString("1.3.6.1.4.1.32473.1"), 2);
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(5, 5, row), 1), set(cell(5, 6, row), 1), set("1", 1)}));
    EXPECT_THAT(recorder.lines(), IsEmpty());
}

TEST_F(ManagementCallbackAdapterTest, TheEmptyTextRunsFunction5AndResetsTheCell)
{
    start();
    adapter.callbackValueChanged(managementCell(5), std::string());
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"function 5 \"\""}));
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 5, row), "")}));
}

TEST_F(ManagementCallbackAdapterTest, AnyOtherTextOnlyResetsTheCell)
{
    start();
    adapter.callbackValueChanged(managementCell(5), std::string("run"));
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 5, row), "")}));
}

TEST_F(ManagementCallbackAdapterTest, TheEmptyTextOnATriggerRunsNothing)
{
    start();
    adapter.callbackValueChanged(managementCell(4), std::string());
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 4, row), "")}));
}

TEST_F(ManagementCallbackAdapterTest, WithoutAHandlerEverySetOnlyResetsTheCell)
{
    start();
    ManagementCallbackAdapter withoutHandler(nullptr, &table);
    withoutHandler.callbackValueChanged(managementCell(1), 2);
    withoutHandler.callbackValueChanged(managementCell(5), std::string());
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 1, row), 1), set(cell(5, 5, row), "")}));
}

TEST_F(ManagementCallbackAdapterTest, AFunctionThatThrowsResetsItsCell)
{
    start();
    handler.onCall = [] { throw std::runtime_error("broken"); };
    EXPECT_THROW(adapter.callbackValueChanged(managementCell(2), 2), std::runtime_error);
    EXPECT_THROW(adapter.callbackValueChanged(managementCell(5), std::string()), std::runtime_error);
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 2, row), 1), set(cell(5, 5, row), "")}));
}

TEST_F(ManagementCallbackAdapterTest, EveryValidationIsAccepted)
{
    EXPECT_EQ(adapter.callbackValidateValue(managementCell(1), 77), 0u);
    EXPECT_EQ(adapter.callbackValidateValue(managementCell(1), std::string("run")), 0u);
    EXPECT_THAT(recorder.lines(), IsEmpty());
}

} // namespace
