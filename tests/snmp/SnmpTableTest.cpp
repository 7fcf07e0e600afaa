// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpTable.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <utility>

#include <vigil/ValueChangedCallback.h>

#include "snmp/SnmpHealthCheckTable.h"
#include "snmp/SnmpMetricResultTable.h"
#include "snmp/SnmpMetricTable.h"
#include "snmp/SnmpMgmFuncTable.h"
#include "snmp/SnmpPerfDataTable.h"
#include "support/LibraryTest.h"
#include "support/Oids.h"
#include "support/QtMessages.h"
#include "support/ScriptedCallbacks.h"

using support::below;
using support::cell;
using support::QtMessages;
using support::Recorder;
using support::ScriptedCallback;
using support::set;
using support::unset;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

constexpr unsigned int noColumn = (std::numeric_limits<unsigned int>::max)();

std::string indexText(const std::string& text)
{
    return SnmpMetricTable::makeVarLenStringOid(text).toStdString();
}

std::vector<std::string> debugTexts(const QtMessages& messages)
{
    std::vector<std::string> texts;
    for (const QString& text : messages.all())
        texts.push_back(text.toStdString());
    return texts;
}

/// Runs a command when it is destroyed.
class CallbackWithLastWords : public vigil::ValueChangedCallback
{
public:
    explicit CallbackWithLastWords(std::function<void()> lastWords) : m_lastWords(std::move(lastWords)) {}
    ~CallbackWithLastWords() override { m_lastWords(); }

private:
    std::function<void()> m_lastWords;
};

class SnmpTableTest : public support::LibraryTest
{
protected:
    std::unique_ptr<ScriptedCallback> makeCallback(const std::string& name)
    {
        return std::make_unique<ScriptedCallback>(recorder, name);
    }

    Recorder recorder;
    SnmpMetricTable metrics{"app", "hc"};
};

// --- Identifiers

TEST_F(SnmpTableTest, TheIndexOfATextIsItsLengthAndItsBytes)
{
    EXPECT_EQ(indexText("abc"), "3.97.98.99");
    EXPECT_EQ(indexText(std::string("a\0b", 3)), "3.97.0.98");
}

TEST_F(SnmpTableTest, TheIndexOfTheEmptyTextIsTheLength0)
{
    EXPECT_EQ(indexText(""), "0");
}

TEST_F(SnmpTableTest, BytesFrom0x80AreSignExtended)
{
    EXPECT_EQ(indexText("\x7F"), "1.127");
    EXPECT_EQ(indexText("\x80"), "1.4294967168");
    EXPECT_EQ(indexText("\xE9"), "1.4294967273");
    EXPECT_EQ(indexText("\xFF"), "1.4294967295");
}

TEST_F(SnmpTableTest, ATextTooLongForItsLengthArcThrowsAText)
{
    constexpr std::uint64_t longest = 4294967295u;
    EXPECT_EQ(SnmpMetricTable::makeLengthArc(longest), 4294967295u);
    try {
        SnmpMetricTable::makeLengthArc(longest + 1);
        FAIL() << "nothing was thrown";
    } catch (const char* text) {
        EXPECT_STREQ(text, "makeVarLenStringOid(): id length exceeds uint32 limit.");
    }
}

TEST_F(SnmpTableTest, TheIndexOfAPairIsTheIndexesOfItsTextsInOrder)
{
    EXPECT_EQ(SnmpHealthCheckTable().indexOid({"a", "bc"}).toStdString(), "1.97.2.98.99");
    EXPECT_EQ(SnmpHealthCheckTable().indexOid({"", ""}).toStdString(), "0.0");
}

TEST_F(SnmpTableTest, ACellIdentifierIsEntryColumnCheckAndMetric)
{
    start();
    metrics.createRow("m");
    metrics.setIntColumn("m", SnmpMetricTable::warningRangeIndex, 7);
    EXPECT_THAT(publications(), ElementsAreArray({"127.3.1.200.4.2.1.3.3.97.112.112.2.104.99.1.109 = 7"}));
}

TEST_F(SnmpTableTest, AColumnContainsItselfItsRowsAndNothingElse)
{
    const std::string entry = "127.3.1.200.4.2.1";
    EXPECT_EQ(metrics.columnIndexOf(below(entry + ".2")), 0u);
    EXPECT_EQ(metrics.columnIndexOf(below(cell(2, 2, {"app", "hc", "m"}))), 0u);
    EXPECT_EQ(metrics.columnIndexOf(below(cell(2, 3, {"app", "hc", "m"}))), 1u);
    EXPECT_EQ(metrics.columnIndexOf(below(cell(2, 4, {"another", "check", "m"}))), 2u);
    EXPECT_EQ(metrics.columnIndexOf(below(entry + ".5.1.2.3")), 3u);
    for (const char* column : {".1", ".6", ".20", ""})
        EXPECT_EQ(metrics.columnIndexOf(below(entry + column)), noColumn) << column;
}

TEST_F(SnmpTableTest, AnIdentifierOfAnotherTableHasNoColumn)
{
    const Oid other = below(cell(3, 2, {"app", "hc", "m"}));
    EXPECT_EQ(metrics.columnIndexOf(other), noColumn);
    EXPECT_EQ(SnmpMgmFuncTable().columnIndexOf(other), noColumn);
    EXPECT_EQ(metrics.columnIndexOf(Oid()), noColumn);
}

TEST_F(SnmpTableTest, WithoutAColumnTheIndexIs4ForTextKeysAnd5ForPairKeys)
{
    const Oid other = below(cell(1, 3, {"app", "hc"}));
    EXPECT_EQ(metrics.columnIndexOrNone(other), 4u);
    EXPECT_EQ(SnmpPerfDataTable("app", "hc").columnIndexOrNone(other), 4u);
    EXPECT_EQ(SnmpMgmFuncTable().columnIndexOrNone(other), 5u);
    EXPECT_EQ(metrics.columnIndexOrNone(below(cell(2, 5, {"app", "hc", "m"}))), 3u);
    EXPECT_EQ(SnmpMgmFuncTable().columnIndexOrNone(below(cell(5, 5, {"app", "hc"}))), 4u);
}

// --- Rows

TEST_F(SnmpTableTest, ANewRowWritesNothing)
{
    start();
    metrics.createRow("m");
    EXPECT_TRUE(metrics.hasRow("m"));
    EXPECT_FALSE(metrics.hasRow("n"));
    EXPECT_THAT(publications(), IsEmpty());
}

TEST_F(SnmpTableTest, ReplacingARowDropsItsCallbackAndWritesNothing)
{
    start();
    metrics.createRow("m");
    bool isGone = false;
    metrics.setRowCallback("m", std::make_unique<CallbackWithLastWords>([&] { isGone = true; }));
    metrics.createRow("m");
    EXPECT_TRUE(isGone);
    EXPECT_TRUE(metrics.hasRow("m"));
    EXPECT_FALSE(metrics.hasRowCallback("m"));
    EXPECT_THAT(publications(), IsEmpty());
    for (const int column : {2, 3, 4, 5}) // still in the store
        facade.deregisterValueChanged(below(cell(2, column, {"app", "hc", "m"})));
}

TEST_F(SnmpTableTest, NothingIsWrittenToAMissingRow)
{
    start();
    metrics.setIntColumn("m", 3, 1);
    metrics.removeRow("m");
    metrics.removeRowCallback("m");
    EXPECT_FALSE(metrics.hasRow("m"));
    EXPECT_THAT(publications(), IsEmpty());
}

TEST_F(SnmpTableTest, RemovingARowDeregistersItsCallbackAndThenWithdrawsEachCellOnce)
{
    start();
    metrics.createRow("m");
    metrics.setRowCallback("m", std::make_unique<CallbackWithLastWords>(
                                    [this] { facade.sendValue(below("1"), "the callback is gone", 0); }));
    metrics.removeRow("m");
    metrics.removeRow("m");
    const std::vector<std::string> row = {"app", "hc", "m"};
    EXPECT_THAT(publications(),
                ElementsAreArray({set("1", "the callback is gone"), unset(cell(2, 2, row)),
                                  unset(cell(2, 3, row)), unset(cell(2, 4, row)), unset(cell(2, 5, row))}));
    EXPECT_FALSE(metrics.hasRow("m"));
    for (const int column : {2, 3, 4, 5})
        EXPECT_EQ(validate(cell(2, column, row), 5), "answer 1 to " + set(cell(2, column, row), 5));
}

TEST_F(SnmpTableTest, AllRowsAreRemovedInByteOrderOfTheirKeys)
{
    start();
    SnmpMetricResultTable results("a", "b");
    for (const char* name : {"\xC3\xA4", "z", "Z", "", "aa", "a"})
        results.createRow(name);
    results.removeAllRows();
    std::vector<std::string> expected;
    for (const char* name : {"", "Z", "a", "aa", "z"}) {
        expected.push_back(unset(cell(3, 1, {"a", "b", name})));
        expected.push_back(unset(cell(3, 2, {"a", "b", name})));
    }
    const std::string umlaut = ".1.97.1.98.2.4294967235.4294967204";
    expected.push_back(unset("127.3.1.200.4.3.1.1" + umlaut));
    expected.push_back(unset("127.3.1.200.4.3.1.2" + umlaut));
    EXPECT_EQ(publications(), expected);
    EXPECT_FALSE(results.hasRow("a"));
}

TEST_F(SnmpTableTest, DestroyingATableWithdrawsNothing)
{
    start();
    {
        SnmpMetricTable table("app", "hc");
        table.createRow("m");
    }
    EXPECT_THAT(publications(), IsEmpty());
}

// --- Callbacks

TEST_F(SnmpTableTest, ACallbackReceivesTheSetsOfAllCellsOfItsRow)
{
    start();
    const std::vector<std::string> row = {"app", "hc", "m"};
    metrics.createRow("m");
    metrics.createRow("n");
    metrics.setRowCallback("m", makeCallback("m"));
    EXPECT_TRUE(metrics.hasRowCallback("m"));
    EXPECT_FALSE(metrics.hasRowCallback("n"));
    for (const int column : {2, 3, 4, 5})
        EXPECT_EQ(validate(cell(2, column, row), 5), "answer 0 to " + set(cell(2, column, row), 5));
    EXPECT_EQ(validate(cell(2, 3, {"app", "hc", "n"}), 5),
              "answer 1 to " + set(cell(2, 3, {"app", "hc", "n"}), 5));
    EXPECT_EQ(recorder.lines().size(), 4u);
    metrics.removeAllRows();
}

TEST_F(SnmpTableTest, ASecondCallbackReplacesAndDestroysTheFirst)
{
    start();
    const std::string oid = cell(2, 3, {"app", "hc", "m"});
    metrics.createRow("m");
    bool firstIsGone = false;
    metrics.setRowCallback("m", std::make_unique<CallbackWithLastWords>([&] { firstIsGone = true; }));
    metrics.setRowCallback("m", makeCallback("second"));
    EXPECT_TRUE(firstIsGone);
    commit(oid, 5);
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"second changed " + below(oid).toStdString() + " = 5"}));
    metrics.removeAllRows();
}

TEST_F(SnmpTableTest, ACallbackForAMissingRowIsDestroyed)
{
    start();
    bool isGone = false;
    metrics.setRowCallback("m", std::make_unique<CallbackWithLastWords>([&] { isGone = true; }));
    EXPECT_TRUE(isGone);
    EXPECT_FALSE(metrics.hasRow("m"));
    const std::string oid = cell(2, 3, {"app", "hc", "m"});
    EXPECT_EQ(validate(oid, 5), "answer 1 to " + set(oid, 5));
}

TEST_F(SnmpTableTest, ARemovedCallbackIsDestroyedAndNoLongerCalled)
{
    start();
    metrics.createRow("m");
    bool isGone = false;
    metrics.setRowCallback("m", std::make_unique<CallbackWithLastWords>([&] { isGone = true; }));
    metrics.removeRowCallback("m");
    EXPECT_TRUE(isGone);
    EXPECT_TRUE(metrics.hasRow("m"));
    const std::string oid = cell(2, 3, {"app", "hc", "m"});
    EXPECT_EQ(validate(oid, 5), "answer 1 to " + set(oid, 5));
    metrics.removeRowCallback("m");
}

TEST_F(SnmpTableTest, WithoutARunningLibraryRowsAreKept)
{
    metrics.createRow("m");
    metrics.setRowCallback("m", makeCallback("m"));
    metrics.setIntColumn("m", 3, 1);
    metrics.removeRow("m");
    EXPECT_FALSE(metrics.hasRow("m"));
}

// --- The five tables

TEST_F(SnmpTableTest, AHealthCheckRowIsStatusAndSummary)
{
    start();
    const QtMessages messages;
    SnmpHealthCheckTable table;
    table.setRow({"app", "hc"}, 2, "bad");
    EXPECT_TRUE(table.hasRow({"app", "hc"}));
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, {"app", "hc"}), 2), set(cell(1, 4, {"app", "hc"}), "bad")}));
    EXPECT_THAT(debugTexts(messages), ElementsAreArray({"set SnmpHealthCheckTable row for  app hc"}));
}

TEST_F(SnmpTableTest, DebugTextsShowKeysAndNamesAsUtf8)
{
    const QtMessages messages;
    SnmpHealthCheckTable().setRow({"T\xC3\xBCr", ""}, 2, "bad");
    metrics.createRow("\xC2\xB5");
    metrics.setRow("\xC2\xB5", "", "", "");
    EXPECT_THAT(debugTexts(messages), ElementsAreArray({"set SnmpHealthCheckTable row for  T\xC3\xBCr ",
                                                        "set SnmpMetricTable row for  \xC2\xB5"}));
}

TEST_F(SnmpTableTest, AMetricRowIsUnitWarningRangeAndCriticalRange)
{
    start();
    metrics.createRow("m");
    const QtMessages messages;
    metrics.setRow("m", "%", "10:20", "off");
    const std::vector<std::string> row = {"app", "hc", "m"};
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 2, row), "%"), set(cell(2, 3, row), "10:20"),
                                                  set(cell(2, 4, row), "off")}));
    EXPECT_THAT(debugTexts(messages), ElementsAreArray({"set SnmpMetricTable row for  m"}));
}

TEST_F(SnmpTableTest, TheRowOfAnUnknownMetricIsNotCreatedWrittenOrLogged)
{
    start();
    const QtMessages messages;
    metrics.setRow("m", "%", "10:20", "off");
    EXPECT_FALSE(metrics.hasRow("m"));
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_THAT(debugTexts(messages), IsEmpty());
}

TEST_F(SnmpTableTest, AResultRowIsStatusAndSummary)
{
    start();
    const QtMessages messages;
    SnmpMetricResultTable table("app", "hc");
    table.setRow("m", 1, "text");
    const std::vector<std::string> row = {"app", "hc", "m"};
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(3, 1, row), 1), set(cell(3, 2, row), "text")}));
    EXPECT_THAT(debugTexts(messages), IsEmpty());
}

TEST_F(SnmpTableTest, APerformanceDataRowIsFiveTexts)
{
    start();
    const QtMessages messages;
    SnmpPerfDataTable table("app", "hc");
    table.setRow("m", "label", "1.5", "%", "~:80", "~:95");
    const std::vector<std::string> row = {"app", "hc", "m"};
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(4, 1, row), "label"), set(cell(4, 2, row), "1.5"),
                                                  set(cell(4, 3, row), "%"), set(cell(4, 4, row), "~:80"),
                                                  set(cell(4, 5, row), "~:95")}));
    EXPECT_THAT(debugTexts(messages), IsEmpty());
}

TEST_F(SnmpTableTest, AManagementRowIsFourNumbersAndAText)
{
    start();
    const QtMessages messages;
    SnmpMgmFuncTable table;
    table.setRow({"app", "hc"}, 1, 2, 3, 4, "text");
    const std::vector<std::string> row = {"app", "hc"};
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(5, 1, row), 1), set(cell(5, 2, row), 2), set(cell(5, 3, row), 3),
                                  set(cell(5, 4, row), 4), set(cell(5, 5, row), "text")}));
    EXPECT_THAT(debugTexts(messages), IsEmpty());
}

TEST_F(SnmpTableTest, WritingARowKeepsItsCallback)
{
    start();
    SnmpMgmFuncTable table;
    const std::string oid = cell(5, 1, {"app", "hc"});
    table.setRow({"app", "hc"}, 1, 1, 1, 1, "");
    table.setRowCallback({"app", "hc"}, makeCallback("row"));
    table.setRow({"app", "hc"}, 1, 1, 1, 1, "");
    EXPECT_EQ(validate(oid, 2), "answer 0 to " + set(oid, 2));
    table.removeAllRows();
}

} // namespace
