// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "snmp/SnmpConnector.h"

#include <limits>
#include <memory>
#include <utility>

#include <vigil/HealthCheck.h>
#include <vigil/Metric.h>
#include <vigil/Oid.h>
#include <vigil/Range.h>

#include "snmp/RemoteMetricObserver.h"
#include "support/LibraryTest.h"
#include "support/QtMessages.h"
#include "support/RecordingManagementHandler.h"
#include "types/ResultEntry.h"

using support::cell;
using support::QtMessages;
using support::Recorder;
using support::set;
using support::unset;
using testing::Contains;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::HealthStatus;
using vigil::Range;
using vigil::Result;

namespace {

const std::vector<std::string> checkRow = {"app", "hc"};
const std::vector<std::string> metricRow = {"app", "hc", "m"};

/// A check with fixed keys, status and summary.
class FakeCheck : public vigil::HealthCheck
{
public:
    ~FakeCheck() override = default;
    vigil::SimpleMetric* createSimpleMetric(const std::string&) override { return nullptr; }
    vigil::ScalarMetric* createScalarMetric(const std::string&) override { return nullptr; }
    std::string getFirstKey() const override { return "app"; }
    std::string getSecondKey() const override { return "hc"; }
    void setDescription(const std::string&) override {}
    std::string getDescription() const override { return std::string(); }
    void registerManagementHandler(ManagementHandler*) override {}
    void unregisterManagementHandler() override {}
    void update() override {}
    HealthStatus getStatus() const override { return status; }
    std::string getSummary() const override { return summary; }
    void getResults(std::vector<Result>&) const override {}
    void destroy() override {}

    HealthStatus status = HealthStatus::Unknown;
    std::string summary;
};

class FakeMetric : public vigil::Metric
{
public:
    explicit FakeMetric(std::string name) : m_name(std::move(name)) {}
    virtual ~FakeMetric() = default;
    std::string getName() const override { return m_name; }
    std::string getUnit() const override { return "%"; }
    const Range& getWarningRange() const override { return m_warning; }
    const Range& getCriticalRange() const override { return m_critical; }
    void remove() override {}

private:
    std::string m_name;
    Range m_warning = Range::CreateThresholdAbove(80);
    Range m_critical = Range::CreateNoLimit();
};

/// Accepts every range.
class AcceptingObserver : public RemoteMetricObserver
{
public:
    explicit AcceptingObserver(vigil::Metric& metric) : m_metric(metric) {}
    vigil::Metric& getMetric() override { return m_metric; }
    bool checkRangeChange(RangeKind, const Range&) override { return true; }
    void applyRange(RangeKind, const Range&) override {}
    void onRangeChanged(RangeKind) override {}

private:
    vigil::Metric& m_metric;
};

ResultEntry result(const std::string& name, HealthStatus status, const std::string& summary)
{
    ResultEntry entry;
    entry.result = Result(name, status, summary);
    entry.perfData.reset();
    return entry;
}

ResultEntry resultWithNumber(const std::string& name, double value)
{
    ResultEntry entry;
    entry.result = Result(name, HealthStatus::Ok, "fine");
    entry.perfData->setLabel(name);
    entry.perfData->setValue(value);
    entry.perfData->setUnit("%");
    entry.perfData->setWarning(Range::CreateThresholdAbove(80));
    entry.perfData->setCritical(Range::CreateNoLimit());
    return entry;
}

template <typename... Entries>
std::vector<ResultEntry> listOf(Entries... entries)
{
    std::vector<ResultEntry> list;
    (list.push_back(std::move(entries)), ...);
    return list;
}

class SnmpConnectorTest : public support::LibraryTest
{
protected:
    /// Starts the library and creates the connector; returns after its first publications.
    void startWithConnector()
    {
        start();
        connector = std::make_unique<SnmpConnector>(&check);
        publications();
    }

    ~SnmpConnectorTest() override { connector.reset(); }

    int countDebugTexts(const QtMessages& messages, const char* text) const
    {
        return messages.all().filter(QString::fromLatin1(text)).size();
    }

    std::string verdict(int column, const std::string& text)
    {
        return validate(cell(2, column, metricRow), text).substr(0, 8);
    }

    FakeCheck check;
    FakeMetric metric{"m"};
    AcceptingObserver observer{metric};
    Recorder recorder;
    support::RecordingManagementHandler handler{recorder};
    std::unique_ptr<Connector> connector;
};

// --- Lifetime

TEST_F(SnmpConnectorTest, ANewConnectorPublishesTheCheckAtOnce)
{
    start();
    connector = std::make_unique<SnmpConnector>(&check);
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 3), set(cell(1, 4, checkRow), "")}));
}

TEST_F(SnmpConnectorTest, DestructionWithdrawsAllCellsOfTheCheck)
{
    startWithConnector();
    connector->addMetric("m");
    connector->updateResults(listOf(resultWithNumber("m", 1)));
    connector->registerManagementHandler(&handler);
    publications();
    connector.reset();
    std::vector<std::string> expected;
    for (const int column : {2, 3, 4, 5})
        expected.push_back(unset(cell(2, column, metricRow)));
    for (const int column : {1, 2})
        expected.push_back(unset(cell(3, column, metricRow)));
    for (const int column : {1, 2, 3, 4, 5})
        expected.push_back(unset(cell(4, column, metricRow)));
    for (const int column : {3, 4})
        expected.push_back(unset(cell(1, column, checkRow)));
    for (const int column : {1, 2, 3, 4, 5})
        expected.push_back(unset(cell(5, column, checkRow)));
    EXPECT_EQ(publications(), expected);
}

TEST_F(SnmpConnectorTest, DestructionKeepsTheRowsOfOtherChecks)
{
    class OtherCheck : public FakeCheck
    {
        std::string getSecondKey() const override { return "other"; }
    };
    startWithConnector();
    OtherCheck otherCheck;
    {
        SnmpConnector other(&otherCheck);
        other.addMetric("m");
        publications();
    }
    for (const std::string& line : publications())
        EXPECT_THAT(line, testing::HasSubstr(".5.111.116.104.101.114"));
}

TEST_F(SnmpConnectorTest, AfterCleanupAConnectorDoesNothingAndDoesNotFail)
{
    startWithConnector();
    connector->addMetric("m");
    connector->registerManagementHandler(&handler);
    connector->registerRemoteMetricObserver(&observer);
    publications();
    facade.cleanup();
    start();
    connector->updateResults(listOf(result("m", HealthStatus::Ok, "fine")));
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(3, 1, metricRow), 0), set(cell(3, 2, metricRow), "fine")}))
        << "the shared tables it knew are gone";
    connector->registerManagementHandler(&handler);
    connector->unregisterManagementHandler();
    EXPECT_THAT(publications(), IsEmpty());
    connector.reset();
    for (const std::string& line : publications()) {
        EXPECT_NE(line, unset(cell(1, 3, checkRow)));
        EXPECT_NE(line, unset(cell(5, 1, checkRow)));
    }
}

TEST_F(SnmpConnectorTest, WithoutARunningLibraryAConnectorDoesNothingAndDoesNotFail)
{
    connector = std::make_unique<SnmpConnector>(&check);
    connector->addMetric("m");
    connector->updateMetric(metric);
    connector->registerRemoteMetricObserver(&observer);
    connector->registerManagementHandler(&handler);
    connector->updateResults(listOf(resultWithNumber("m", 1)));
    connector->unregisterManagementHandler();
    connector->unregisterRemoteMetricObserver(&observer);
    connector.reset();
    start();
    EXPECT_THAT(publications(), IsEmpty());
}

// --- Results

TEST_F(SnmpConnectorTest, AnUpdatePublishesTheCheckAndThenEachResultInListOrder)
{
    startWithConnector();
    check.status = HealthStatus::Warning;
    check.summary = "D - x";
    connector->updateResults(listOf(result("z", HealthStatus::Warning, "x"), resultWithNumber("m", 97.5)));
    const std::vector<std::string> z = {"app", "hc", "z"};
    EXPECT_THAT(
        publications(),
        ElementsAreArray({set(cell(1, 3, checkRow), 1), set(cell(1, 4, checkRow), "D - x"),
                          set(cell(3, 1, z), 1), set(cell(3, 2, z), "x"), set(cell(3, 1, metricRow), 0),
                          set(cell(3, 2, metricRow), "fine"), set(cell(4, 1, metricRow), "m"),
                          set(cell(4, 2, metricRow), "97.5"), set(cell(4, 3, metricRow), "%"),
                          set(cell(4, 4, metricRow), "~:80"), set(cell(4, 5, metricRow), "off")}));
}

TEST_F(SnmpConnectorTest, NumbersArePublishedAsTextWithSixSignificantDigits)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    startWithConnector();
    const std::vector<std::pair<double, std::string>> cases = {
        {0.1, "0.1"},    {1234567.0, "1.23457e+06"}, {1.0 / 3.0, "0.333333"}, {-2.5, "-2.5"},
        {1e21, "1e+21"}, {5e-324, "4.94066e-324"},   {notANumber, "nan"},     {-infinity, "-inf"}};
    for (const auto& [value, text] : cases) {
        connector->updateResults(listOf(resultWithNumber("m", value)));
        EXPECT_THAT(publications(), Contains(set(cell(4, 2, metricRow), text)));
    }
}

TEST_F(SnmpConnectorTest, AResultWithoutPerformanceDataWithdrawsThePerformanceRow)
{
    startWithConnector();
    connector->updateResults(listOf(resultWithNumber("m", 1), resultWithNumber("n", 1)));
    publications();
    connector->updateResults(listOf(result("m", HealthStatus::Ok, "fine")));
    std::vector<std::string> lines = publications();
    lines.erase(lines.begin(), lines.begin() + 4); // the check's and the result's
    EXPECT_THAT(lines, ElementsAreArray({unset(cell(4, 1, metricRow)), unset(cell(4, 2, metricRow)),
                                         unset(cell(4, 3, metricRow)), unset(cell(4, 4, metricRow)),
                                         unset(cell(4, 5, metricRow))}));
}

TEST_F(SnmpConnectorTest, MissingResultsKeepTheirRows)
{
    startWithConnector();
    connector->updateResults(listOf(resultWithNumber("m", 1)));
    publications();
    connector->updateResults({});
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(1, 3, checkRow), 3), set(cell(1, 4, checkRow), "")}));
}

// --- Metrics

TEST_F(SnmpConnectorTest, AnAddedMetricPublishesOnlyItsRemoteChangeFlag)
{
    startWithConnector();
    connector->addMetric("m");
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 0)}));
}

TEST_F(SnmpConnectorTest, AnUpdatedMetricPublishesUnitAndRanges)
{
    startWithConnector();
    connector->addMetric("m");
    publications();
    connector->updateMetric(metric);
    EXPECT_THAT(publications(),
                ElementsAreArray({set(cell(2, 2, metricRow), "%"), set(cell(2, 3, metricRow), "~:80"),
                                  set(cell(2, 4, metricRow), "off")}));
}

TEST_F(SnmpConnectorTest, AnUpdateBeforeTheMetricIsAddedWritesAndLogsNothing)
{
    startWithConnector();
    const QtMessages messages;
    connector->updateMetric(metric);
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_TRUE(messages.all().isEmpty());
}

TEST_F(SnmpConnectorTest, ARemovedMetricLosesItsRowsInAllThreeTables)
{
    startWithConnector();
    connector->addMetric("m");
    connector->updateResults(listOf(resultWithNumber("m", 1)));
    publications();
    connector->removeMetric("m");
    std::vector<std::string> expected;
    for (const int column : {2, 3, 4, 5})
        expected.push_back(unset(cell(2, column, metricRow)));
    for (const int column : {1, 2})
        expected.push_back(unset(cell(3, column, metricRow)));
    for (const int column : {1, 2, 3, 4, 5})
        expected.push_back(unset(cell(4, column, metricRow)));
    EXPECT_EQ(publications(), expected);
    connector->removeMetric("m");
    EXPECT_THAT(publications(), IsEmpty());
}

// --- Remote changes

TEST_F(SnmpConnectorTest, ARegisteredObserverShows1InColumn5AndMakesTheRowWritable)
{
    startWithConnector();
    connector->addMetric("m");
    EXPECT_EQ(verdict(3, "10:20"), "answer 1");
    publications();
    const QtMessages messages;
    connector->registerRemoteMetricObserver(&observer);
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 1)}));
    EXPECT_EQ(verdict(3, "10:20"), "answer 0");
    EXPECT_EQ(verdict(2, "10:20"), "answer 1");
    EXPECT_EQ(
        countDebugTexts(messages,
                        "SnmpConnector::registerRemoteMetricObserver: Registering metric observer for m."),
        1);
}

TEST_F(SnmpConnectorTest, AnUnregisteredObserverShows0AndSetsAreNoLongerRouted)
{
    startWithConnector();
    connector->addMetric("m");
    connector->registerRemoteMetricObserver(&observer);
    publications();
    const QtMessages messages;
    connector->unregisterRemoteMetricObserver(&observer);
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 0)}));
    EXPECT_EQ(verdict(3, "10:20"), "answer 1");
    EXPECT_EQ(countDebugTexts(messages,
                              "SnmpConnector::unregisterRemoteMetricObserver: Remove metric observer for m."),
              1);
}

TEST_F(SnmpConnectorTest, AnObserverWithoutARowIsLoggedButReceivesNothing)
{
    startWithConnector();
    const QtMessages messages;
    connector->registerRemoteMetricObserver(&observer);
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_EQ(verdict(3, "10:20"), "answer 1");
    EXPECT_EQ(countDebugTexts(messages, "Registering metric observer for m."), 1);
}

TEST_F(SnmpConnectorTest, AddingAMetricAgainDeregistersItsCallback)
{
    startWithConnector();
    connector->addMetric("m");
    connector->registerRemoteMetricObserver(&observer);
    EXPECT_EQ(verdict(3, "10:20"), "answer 0");
    publications();
    connector->addMetric("m");
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, metricRow), 0)}));
    EXPECT_EQ(verdict(3, "10:20"), "answer 1");
}

TEST_F(SnmpConnectorTest, RemovingAMetricDeregistersItsCallback)
{
    startWithConnector();
    connector->addMetric("m");
    connector->registerRemoteMetricObserver(&observer);
    connector->removeMetric("m");
    EXPECT_EQ(verdict(3, "10:20"), "answer 1");
}

// --- Management functions

TEST_F(SnmpConnectorTest, ARegisteredHandlerHasARowAndIsCalled)
{
    startWithConnector();
    connector->registerManagementHandler(&handler);
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(5, 1, checkRow), 1), set(cell(5, 2, checkRow), 1),
                                                  set(cell(5, 3, checkRow), 1), set(cell(5, 4, checkRow), 1),
                                                  set(cell(5, 5, checkRow), "")}));
    commit(cell(5, 3, checkRow), 2);
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"function 3"}));
}

TEST_F(SnmpConnectorTest, AnUnregisteredHandlerKeepsItsRowButIsNotCalled)
{
    startWithConnector();
    connector->registerManagementHandler(&handler);
    publications();
    connector->unregisterManagementHandler();
    commit(cell(5, 3, checkRow), 2);
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_THAT(recorder.lines(), IsEmpty());
    connector->unregisterManagementHandler();
}

TEST_F(SnmpConnectorTest, ASecondHandlerReplacesTheFirst)
{
    startWithConnector();
    Recorder secondRecorder;
    support::RecordingManagementHandler second(secondRecorder);
    connector->registerManagementHandler(&handler);
    connector->registerManagementHandler(&second);
    commit(cell(5, 1, checkRow), 2);
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_THAT(secondRecorder.lines(), ElementsAreArray({"function 1"}));
    connector->unregisterManagementHandler();
}

} // namespace
