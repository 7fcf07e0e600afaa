// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/HealthCheck.h>

#include <vigil/ScalarMetric.h>
#include <vigil/SimpleMetric.h>

#include <QLoggingCategory>

#include <future>

#include "base/wire/Protocol.h"
#include "support/CheckPointer.h"
#include "support/LibraryTest.h"
#include "support/Oids.h"
#include "support/QtMessages.h"
#include "support/RecordingManagementHandler.h"
#include "support/ScriptedCallbacks.h"

using support::cell;
using support::CheckPointer;
using support::makeCheck;
using support::set;
using support::unset;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::HealthStatus;
using vigil::Range;
using vigil::Result;
using vigil::ScalarMetric;
using vigil::SimpleMetric;

namespace {

/// A metric with a fixed text.
SimpleMetric* addSimpleMetric(vigil::HealthCheck& check, const char* name, HealthStatus status,
                              const char* text)
{
    SimpleMetric* metric = check.createSimpleMetric(name);
    metric->setStatus(status);
    metric->setTemplate(text);
    return metric;
}

class HealthCheckTest : public support::LibraryTest
{
protected:
    const std::vector<std::string> checkRow = {"app", "hc"};
    const std::vector<std::string> metricRow = {"app", "hc", "cpu"};

    std::vector<std::string> resultsOf(const vigil::HealthCheck& check) const
    {
        std::vector<Result> results = {Result("left over from before")};
        check.getResults(results);
        std::vector<std::string> lines;
        for (const Result& result : results)
            lines.push_back(result.getName() + ": " + result.getSummary());
        return lines;
    }
};

// --- Debug output

TEST_F(HealthCheckTest, ItsDebugLinesCanBeTurnedOffAlone)
{
    start(); // Qt may warn about the library's application object
    const support::QtMessages messages;
    QLoggingCategory::setFilterRules(QStringLiteral("vigil.*.debug=false"));
    const CheckPointer check = makeCheck("app", "hc");
    ScalarMetric* metric = check->createScalarMetric("cpu");
    check->update();
    metric->remove();
    QLoggingCategory::setFilterRules({});
    EXPECT_TRUE(messages.all().isEmpty()) << messages.all().join(QLatin1Char('\n')).toStdString();
    check->update();
    EXPECT_TRUE(messages.all().contains(QStringLiteral("set SnmpHealthCheckTable row for  app hc")));
}

// --- Status and summary

TEST_F(HealthCheckTest, ANewCheckIsUnknownWithAnEmptySummary)
{
    const CheckPointer check = makeCheck("app", "hc");
    EXPECT_EQ(check->getFirstKey(), "app");
    EXPECT_EQ(check->getSecondKey(), "hc");
    EXPECT_EQ(check->getDescription(), "");
    EXPECT_EQ(check->getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(check->getSummary(), "");
    EXPECT_THAT(resultsOf(*check), IsEmpty());
}

TEST_F(HealthCheckTest, AnUpdateWithoutMetricsGivesUnknownAndTheDescriptionWithASeparator)
{
    const CheckPointer check = makeCheck("app", "hc");
    check->setDescription("D");
    check->update();
    EXPECT_EQ(check->getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(check->getSummary(), "D - ");
}

TEST_F(HealthCheckTest, TheWorstStatusWinsAndTheSummaryListsTheProblems)
{
    const CheckPointer check = makeCheck("app", "hc");
    check->setDescription("D");
    SimpleMetric* a = addSimpleMetric(*check, "a", HealthStatus::Warning, "x");
    SimpleMetric* b = addSimpleMetric(*check, "b", HealthStatus::Critical, "y");
    check->update();
    EXPECT_EQ(check->getStatus(), HealthStatus::Critical);
    EXPECT_EQ(check->getSummary(), "D - x y");

    a->setStatus(HealthStatus::Ok);
    check->update();
    EXPECT_EQ(check->getStatus(), HealthStatus::Critical);
    EXPECT_EQ(check->getSummary(), "D - y");
    a->remove();
    b->remove();
}

TEST_F(HealthCheckTest, TheSummaryOfAnOkCheckIsItsDescription)
{
    const CheckPointer check = makeCheck("app", "hc");
    check->setDescription("D");
    SimpleMetric* metric = addSimpleMetric(*check, "a", HealthStatus::Ok, "x");
    check->update();
    EXPECT_EQ(check->getStatus(), HealthStatus::Ok);
    EXPECT_EQ(check->getSummary(), "D");
    metric->remove();
}

TEST_F(HealthCheckTest, WarningIsWorseThanUnknown)
{
    const CheckPointer check = makeCheck("app", "hc");
    SimpleMetric* a = addSimpleMetric(*check, "a", HealthStatus::Unknown, "x");
    SimpleMetric* b = addSimpleMetric(*check, "b", HealthStatus::Warning, "y");
    check->update();
    EXPECT_EQ(check->getStatus(), HealthStatus::Warning);
    a->remove();
    b->remove();
}

TEST_F(HealthCheckTest, StatusSummaryAndResultsComeFromTheLastUpdate)
{
    const CheckPointer check = makeCheck("app", "hc");
    SimpleMetric* metric = addSimpleMetric(*check, "a", HealthStatus::Ok, "x");
    check->update();
    metric->setStatus(HealthStatus::Critical);
    metric->setTemplate("y");
    check->setDescription("new");
    EXPECT_EQ(check->getStatus(), HealthStatus::Ok);
    EXPECT_EQ(check->getSummary(), "");
    EXPECT_THAT(resultsOf(*check), ElementsAreArray({"a: x"}));
    check->update();
    EXPECT_EQ(check->getStatus(), HealthStatus::Critical);
    EXPECT_EQ(check->getSummary(), "new - y");
    EXPECT_THAT(resultsOf(*check), ElementsAreArray({"a: y"}));
    metric->remove();
}

TEST_F(HealthCheckTest, TheDescriptionCanBeSetToItself)
{
    const CheckPointer check = makeCheck("app", "hc");
    check->setDescription("D");
    check->setDescription(check->getDescription());
    EXPECT_EQ(check->getDescription(), "D");
}

TEST_F(HealthCheckTest, ResultsAreInByteOrderOfTheMetricNames)
{
    const CheckPointer check = makeCheck("app", "hc");
    std::vector<SimpleMetric*> metrics;
    for (const char* name : {"b", "\xC3\xA4", "a", "B"})
        metrics.push_back(addSimpleMetric(*check, name, HealthStatus::Ok, "x"));
    check->update();
    EXPECT_THAT(resultsOf(*check), ElementsAreArray({"B: x", "a: x", "b: x", "\xC3\xA4: x"}));
    for (SimpleMetric* metric : metrics)
        metric->remove();
}

// --- Metrics

TEST_F(HealthCheckTest, ASecondMetricOfTheSameNameHidesTheFirst)
{
    const CheckPointer check = makeCheck("app", "hc");
    SimpleMetric* older = addSimpleMetric(*check, "a", HealthStatus::Critical, "older");
    SimpleMetric* newer = addSimpleMetric(*check, "a", HealthStatus::Ok, "newer");
    check->update();
    EXPECT_THAT(resultsOf(*check), ElementsAreArray({"a: newer"}));
    EXPECT_EQ(check->getStatus(), HealthStatus::Ok);
    EXPECT_EQ(older->getName(), "a");
    EXPECT_EQ(older->getStatus(), HealthStatus::Critical);
    EXPECT_EQ(older->getHealthCheck(), check.get());
    newer->remove();
    older->remove();
}

// Row, entry and removal must agree on the converted name.
TEST_F(HealthCheckTest, InvalidUtf8InANameIsReplacedTheSameWayEverywhere)
{
    start();
    const CheckPointer check = makeCheck("app", "hc");
    publications();
    ScalarMetric* metric = check->createScalarMetric("\xE9");
    const std::string replacementCharacter = "\xEF\xBF\xBD";
    EXPECT_EQ(metric->getName(), replacementCharacter);
    EXPECT_EQ(publications().size(), 4u);
    check->update();
    EXPECT_THAT(resultsOf(*check),
                ElementsAre(replacementCharacter + ": " + replacementCharacter + " is 0."));
    metric->remove();
    check->update();
    EXPECT_THAT(resultsOf(*check), IsEmpty());
}

TEST_F(HealthCheckTest, EmptyKeysAndNamesAreAllowed)
{
    start();
    const CheckPointer check = makeCheck("", "");
    ScalarMetric* metric = check->createScalarMetric("");
    EXPECT_THAT(
        publications(),
        ElementsAreArray({set(cell(1, 3, {"", ""}), 3), set(cell(1, 4, {"", ""}), ""),
                          set(cell(2, 5, {"", "", ""}), 0), set(cell(2, 2, {"", "", ""}), ""),
                          set(cell(2, 3, {"", "", ""}), "off"), set(cell(2, 4, {"", "", ""}), "off")}));
    check->update();
    EXPECT_THAT(resultsOf(*check), ElementsAreArray({":  is 0."}));
    metric->remove();
}

TEST_F(HealthCheckTest, RemovingAHiddenMetricRemovesTheEntryAndRowsOfTheNewerOne)
{
    start();
    const CheckPointer check = makeCheck("app", "hc");
    ScalarMetric* older = check->createScalarMetric("cpu");
    ScalarMetric* newer = check->createScalarMetric("cpu");
    publications();
    older->remove();
    EXPECT_THAT(publications(),
                ElementsAreArray({unset(cell(2, 2, metricRow)), unset(cell(2, 3, metricRow)),
                                  unset(cell(2, 4, metricRow)), unset(cell(2, 5, metricRow))}));
    check->update();
    EXPECT_THAT(resultsOf(*check), IsEmpty());
    EXPECT_EQ(newer->getName(), "cpu");
    newer->remove();
}

TEST_F(HealthCheckTest, ARemovedMetricIsNoLongerEvaluated)
{
    const CheckPointer check = makeCheck("app", "hc");
    SimpleMetric* a = addSimpleMetric(*check, "a", HealthStatus::Ok, "x");
    SimpleMetric* b = addSimpleMetric(*check, "b", HealthStatus::Critical, "y");
    b->remove();
    check->update();
    EXPECT_THAT(resultsOf(*check), ElementsAreArray({"a: x"}));
    a->remove();
}

TEST_F(HealthCheckTest, MetricsOutliveTheirCheck)
{
    CheckPointer check = makeCheck("app", "hc");
    ScalarMetric* scalar = check->createScalarMetric("s");
    SimpleMetric* simple = check->createSimpleMetric("t");
    EXPECT_EQ(scalar->getHealthCheck(), check.get());
    EXPECT_EQ(simple->getHealthCheck(), check.get());
    check.reset();
    EXPECT_EQ(scalar->getHealthCheck(), nullptr);
    EXPECT_EQ(simple->getHealthCheck(), nullptr);
    scalar->setUnit("%");
    scalar->setWarningRange(Range::CreateThresholdAbove(5));
    scalar->setRangeChangeHandler(nullptr);
    scalar->clearRangeChangeHandler();
    simple->setInfo("info");
    EXPECT_EQ(scalar->getUnit(), "%");
    EXPECT_EQ(scalar->getWarningRange().toString(), "~:5");
    scalar->remove();
    simple->remove();
}

// --- Publications

class PublishedHealthCheck : public HealthCheckTest
{
protected:
    void SetUp() override
    {
        start();
        check = makeCheck("app", "hc");
    }

    /// Adds the metric "cpu", which is critical. Everything published before update() is taken from
    /// publications().
    ScalarMetric* addCriticalMetric()
    {
        check->setDescription("D");
        ScalarMetric* cpu = check->createScalarMetric("cpu");
        cpu->setUnit("%");
        cpu->setWarningRange(Range::CreateThresholdAbove(80));
        cpu->setCriticalRange(Range::CreateThresholdAbove(95));
        cpu->setValue(97.5);
        cpu->setPerformanceDataEnabled(true);
        publications();
        return cpu;
    }

    std::vector<std::string> metricRowOf(const char* unit, const char* warning, const char* critical) const
    {
        return {set(cell(2, 2, metricRow), unit), set(cell(2, 3, metricRow), warning),
                set(cell(2, 4, metricRow), critical)};
    }

    /// The withdrawal of these columns of the metric's row.
    std::vector<std::string> withdrawn(int table, const std::vector<int>& columns) const
    {
        std::vector<std::string> lines;
        for (const int column : columns)
            lines.push_back(unset(cell(table, column, metricRow)));
        return lines;
    }

    CheckPointer check;
};

TEST_F(PublishedHealthCheck, ANewCheckPublishesUnknownAndAnEmptySummary)
{
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 3), set(cell(1, 4, checkRow), "")}));
}

TEST_F(PublishedHealthCheck, ADescriptionWaitsForTheUpdate)
{
    publications();
    check->setDescription("D");
    EXPECT_THAT(publications(), IsEmpty());
}

TEST_F(PublishedHealthCheck, ANewMetricPublishesItsKindAndItsRow)
{
    publications();
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    std::vector<std::string> expected = metricRowOf("", "off", "off");
    expected.insert(expected.begin(), set(cell(2, 5, metricRow), 0));
    EXPECT_EQ(publications(), expected);
    cpu->remove();
}

TEST_F(PublishedHealthCheck, AUnitOrARangePublishesTheMetricsRowAtOnce)
{
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    publications();
    cpu->setUnit("%");
    EXPECT_EQ(publications(), metricRowOf("%", "off", "off"));
    cpu->setWarningRange(Range::CreateThresholdAbove(80));
    EXPECT_EQ(publications(), metricRowOf("%", "~:80", "off"));
    cpu->setCriticalRange(Range::CreateThresholdAbove(95));
    EXPECT_EQ(publications(), metricRowOf("%", "~:80", "~:95"));
    cpu->remove();
}

TEST_F(PublishedHealthCheck, AValueAndItsPerformanceDataWaitForTheUpdate)
{
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    publications();
    cpu->setValue(97.5);
    cpu->setPerformanceDataEnabled(true);
    EXPECT_THAT(publications(), IsEmpty());
    cpu->remove();
}

TEST_F(PublishedHealthCheck, AnUpdatePublishesCheckResultAndPerformanceData)
{
    ScalarMetric* cpu = addCriticalMetric();
    check->update();
    const std::string text = "out of critical range: cpu is 97.5%.";
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 2), set(cell(1, 4, checkRow), "D - " + text),
                                  set(cell(3, 1, metricRow), 2), set(cell(3, 2, metricRow), text),
                                  set(cell(4, 1, metricRow), "cpu"), set(cell(4, 2, metricRow), "97.5"),
                                  set(cell(4, 3, metricRow), "%"), set(cell(4, 4, metricRow), "~:80"),
                                  set(cell(4, 5, metricRow), "~:95")}));
    cpu->remove();
}

TEST_F(PublishedHealthCheck, ARemovedMetricWithdrawsItsRowsInAllTables)
{
    ScalarMetric* cpu = addCriticalMetric();
    check->update();
    publications();
    cpu->remove();
    std::vector<std::string> expected = withdrawn(2, {2, 3, 4, 5});
    for (const std::string& line : withdrawn(3, {1, 2}))
        expected.push_back(line);
    for (const std::string& line : withdrawn(4, {1, 2, 3, 4, 5}))
        expected.push_back(line);
    EXPECT_EQ(publications(), expected);
}

TEST_F(PublishedHealthCheck, ADestroyedCheckWithdrawsItsRow)
{
    publications();
    check.reset();
    ASSERT_TRUE(service.waitForDisconnections(1));
    EXPECT_THAT(publicationsSoFar(),
                ElementsAreArray({unset(cell(1, 3, checkRow)), unset(cell(1, 4, checkRow))}));
}

TEST_F(HealthCheckTest, AKeyCanContainNulAndNonAsciiBytes)
{
    start();
    const CheckPointer check = makeCheck(std::string("a\0b", 3), "\xC3\xA4");
    const std::string index = ".3.97.0.98.2.4294967235.4294967204";
    EXPECT_THAT(publications(), ElementsAreArray({set("127.3.1.200.4.1.1.3" + index, 3),
                                                  set("127.3.1.200.4.1.1.4" + index, "")}));
}

TEST_F(HealthCheckTest, DestroyingOneOfTwoChecksWithTheSameKeysWithdrawsTheirRows)
{
    start();
    support::Recorder recorder;
    support::RecordingManagementHandler handler(recorder);
    CheckPointer first = makeCheck("app", "hc");
    const CheckPointer second = makeCheck("app", "hc");
    second->registerManagementHandler(&handler);
    publications();
    first.reset();
    std::vector<std::string> removed = {unset(cell(1, 3, checkRow)), unset(cell(1, 4, checkRow))};
    for (const int column : {1, 2, 3, 4, 5})
        removed.push_back(unset(cell(5, column, checkRow)));
    EXPECT_EQ(publications(), removed);
    commit(cell(5, 1, checkRow), 2);
    EXPECT_THAT(recorder.lines(), IsEmpty());
    second->update();
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 3), set(cell(1, 4, checkRow), " - ")}));
    second->unregisterManagementHandler();
}

TEST_F(HealthCheckTest, DestroyWithdrawsTheRowsOfRemainingMetrics)
{
    start();
    CheckPointer check = makeCheck("app", "hc");
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    check->update();
    publications();
    check.reset();
    ASSERT_TRUE(service.waitForDisconnections(1));
    std::vector<std::string> expected;
    for (const int column : {2, 3, 4, 5})
        expected.push_back(unset(cell(2, column, metricRow)));
    for (const int column : {1, 2})
        expected.push_back(unset(cell(3, column, metricRow)));
    for (const int column : {1, 2, 3, 4, 5})
        expected.push_back(unset(cell(4, column, metricRow)));
    for (const int column : {3, 4})
        expected.push_back(unset(cell(1, column, checkRow)));
    EXPECT_EQ(publicationsSoFar(), expected);
    cpu->remove();
}

TEST_F(HealthCheckTest, AMetricWithoutPerformanceDataHasNoPerformanceRow)
{
    start();
    const CheckPointer check = makeCheck("app", "hc");
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    cpu->setPerformanceDataEnabled(false);
    publications();
    check->update();
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 0), set(cell(1, 4, checkRow), ""),
                                  set(cell(3, 1, metricRow), 0), set(cell(3, 2, metricRow), "cpu is 0.")}));
    cpu->remove();
}

TEST_F(HealthCheckTest, DisablingPerformanceDataWithdrawsItsRowAtTheNextUpdate)
{
    start();
    const CheckPointer check = makeCheck("app", "hc");
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    check->update();
    cpu->setPerformanceDataEnabled(false);
    publications();
    check->update();
    std::vector<std::string> lines = publications();
    ASSERT_EQ(lines.size(), 9u);
    lines.erase(lines.begin(), lines.begin() + 4);
    EXPECT_THAT(lines, ElementsAreArray({unset(cell(4, 1, metricRow)), unset(cell(4, 2, metricRow)),
                                         unset(cell(4, 3, metricRow)), unset(cell(4, 4, metricRow)),
                                         unset(cell(4, 5, metricRow))}));
    cpu->remove();
}

TEST_F(HealthCheckTest, AManagementHandlerIsCalledUntilItIsUnregistered)
{
    start();
    support::Recorder recorder;
    support::RecordingManagementHandler handler(recorder);
    const CheckPointer check = makeCheck("app", "hc");
    EXPECT_EQ(validate(cell(5, 3, checkRow), 2), "answer 1 to " + set(cell(5, 3, checkRow), 2));
    check->registerManagementHandler(&handler);
    publications();
    EXPECT_EQ(validate(cell(5, 3, checkRow), 2), "answer 0 to " + set(cell(5, 3, checkRow), 2));
    commit(cell(5, 3, checkRow), 2);
    commit(cell(5, 3, checkRow), 5);
    commit(cell(5, 5, checkRow), "");
    commit(cell(5, 5, checkRow), "run");
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"function 3", "function 5 \"\""}));
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(5, 3, checkRow), 1), set(cell(5, 3, checkRow), 1),
                                  set(cell(5, 5, checkRow), ""), set(cell(5, 5, checkRow), "")}));
    check->unregisterManagementHandler();
    commit(cell(5, 3, checkRow), 2);
    EXPECT_EQ(recorder.lines().size(), 2u);
}

TEST_F(HealthCheckTest, StatusResultsAndPerformanceDataAreReadOnly)
{
    start();
    support::Recorder recorder;
    support::RecordingManagementHandler handler(recorder);
    const CheckPointer check = makeCheck("app", "hc");
    check->registerManagementHandler(&handler);
    ScalarMetric* cpu = check->createScalarMetric("cpu");
    check->update();
    for (const std::string& oid : {cell(1, 3, checkRow), cell(1, 4, checkRow), cell(3, 1, metricRow),
                                   cell(3, 2, metricRow), cell(4, 1, metricRow), cell(4, 5, metricRow)}) {
        EXPECT_EQ(validate(oid, 1), "answer 1 to " + set(oid, 1));
        EXPECT_EQ(validate(oid, "text"), "answer 1 to " + set(oid, "text"));
    }
    check->unregisterManagementHandler();
    cpu->remove();
}

TEST_F(HealthCheckTest, AManagementFunctionCanUpdateTheCheck)
{
    start();
    support::Recorder recorder;
    support::RecordingManagementHandler handler(recorder);
    const CheckPointer check = makeCheck("app", "hc");
    handler.onCall = [&] { check->update(); };
    check->registerManagementHandler(&handler);
    publications();
    commit(cell(5, 1, checkRow), 2);
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 3), set(cell(1, 4, checkRow), " - "),
                                  set(cell(5, 1, checkRow), 1)}));
    check->unregisterManagementHandler();
}

// --- Start and stop of the library

TEST_F(HealthCheckTest, TheFirstCheckStartsTheLibraryAndTheLastOneStopsIt)
{
    CheckPointer first = makeCheck("app", "1");
    CheckPointer second = makeCheck("app", "2");
    EXPECT_TRUE(log.contains("[VigilSnmp::init] Initializing vigilsnmpif."));
    settle();
    EXPECT_EQ(service.connections(), 1);
    first.reset();
    settle();
    second.reset();
    EXPECT_TRUE(service.waitForDisconnections(1));
    EXPECT_EQ(log.count("[VigilSnmp::cleanup] Cleanup."), 1);

    CheckPointer third = makeCheck("app", "3");
    settle();
    EXPECT_EQ(service.connections(), 2);
    EXPECT_EQ(log.count("[VigilSnmp::init] Initializing vigilsnmpif."), 2);
}

// It counted, but had not started the library, and the next check did not start it either.
TEST_F(HealthCheckTest, ACheckMadeInACallbackDuringTheStopLeavesTheStartToTheNextOne)
{
    CheckPointer last = makeCheck("app", "1");
    settle();
    CheckPointer late;
    std::promise<void> isInside;
    support::Recorder recorder;
    support::ScriptedCallback callback(recorder);
    callback.onCall = [&] {
        isInside.set_value();
        log.waitFor("[VigilSnmp::cleanup] Cleanup.");
        late = makeCheck("app", "late");
    };
    facade.registerValueChangedCallback(support::below("0.1"), &callback);
    service.send(base::SnmpIntType, support::encodedInt("0.1", 1), base::PlainValue);
    isInside.get_future().wait();
    last.reset();
    EXPECT_TRUE(late);

    CheckPointer next = makeCheck("app", "next");
    EXPECT_TRUE(service.waitForConnections(2));
    late.reset();
    settle();
    next.reset();
    EXPECT_TRUE(service.waitForDisconnections(2));
}

TEST_F(HealthCheckTest, AfterCleanupCreatingAndDestroyingACheckPublishesNothing)
{
    start();
    CheckPointer first = makeCheck("app", "1");
    publications();
    facade.cleanup();
    CheckPointer second = makeCheck("app", "2");
    second->createScalarMetric("cpu")->remove();
    second->update();
    second.reset();
    first->update();
    first.reset();
    ASSERT_TRUE(service.waitForDisconnections(1));
    EXPECT_THAT(publicationsSoFar(), IsEmpty());
    EXPECT_EQ(service.connections(), 1);
}

} // namespace
