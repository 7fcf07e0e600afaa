// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/SimpleMetric.h>

#include <vigil/HealthCheck.h>
#include <vigil/Range.h>

#include "support/CheckPointer.h"
#include "support/LibraryTest.h"

using support::cell;
using support::CheckPointer;
using support::makeCheck;
using support::set;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::StartsWith;
using vigil::HealthStatus;
using vigil::Result;

namespace {

class SimpleMetricTest : public support::LibraryTest
{
protected:
    const std::vector<std::string> metricRow = {"app", "hc", "db"};

    ~SimpleMetricTest() override { metric->remove(); }

    Result evaluated() const
    {
        check->update();
        std::vector<Result> results;
        check->getResults(results);
        return results.at(0);
    }

    const CheckPointer check = makeCheck("app", "hc");
    vigil::SimpleMetric* const metric = check->createSimpleMetric("db");
};

TEST_F(SimpleMetricTest, ANewMetricIsUnknownWithEmptyInfo)
{
    EXPECT_EQ(metric->getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(metric->getUnit(), "");
    const Result result = evaluated();
    EXPECT_EQ(result.getName(), "db");
    EXPECT_EQ(result.getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(result.getSummary(), "db is UNKNOWN, .");
}

TEST_F(SimpleMetricTest, TheTextShowsStatusAndInfoWithoutAPrefix)
{
    metric->setInfo("slow replies");
    metric->setStatus(HealthStatus::Warning);
    EXPECT_EQ(evaluated().getSummary(), "db is WARNING, slow replies.");
    metric->setStatus(HealthStatus::Critical);
    EXPECT_EQ(evaluated().getSummary(), "db is CRITICAL, slow replies.");
    metric->setStatus(HealthStatus::Ok);
    EXPECT_EQ(evaluated().getSummary(), "db is OK, slow replies.");
    EXPECT_EQ(evaluated().getStatus(), HealthStatus::Ok);
}

TEST_F(SimpleMetricTest, ATemplateReplacesTheTextAndUnknownPlaceholdersStay)
{
    metric->setInfo("\xC3\xA4");
    metric->setTemplate("{info}{info} {NAME} {name} {unit} {value}");
    EXPECT_EQ(evaluated().getSummary(), "\xC3\xA4\xC3\xA4 {NAME} db {unit} UNKNOWN");
}

TEST_F(SimpleMetricTest, PlaceholdersInsideEarlierReplacementsAreReplacedToo)
{
    vigil::SimpleMetric* odd = check->createSimpleMetric("a {value} {info}");
    odd->setInfo("{name}");
    odd->setTemplate("{name}");
    EXPECT_EQ(evaluated().getSummary(), "a UNKNOWN {name}");
    odd->remove();
}

TEST_F(SimpleMetricTest, BothRangesAreUnset)
{
    EXPECT_EQ(&metric->getWarningRange(), &metric->getCriticalRange());
    EXPECT_EQ(metric->getWarningRange().toString(), "");
    EXPECT_FALSE(metric->getWarningRange().isEnabled());
}

TEST_F(SimpleMetricTest, TheRowOfANewMetricIsAnnouncedBeforeItIsFilled)
{
    settle();
    publications();
    vigil::SimpleMetric* other = check->createSimpleMetric("other");
    const std::vector<std::string> row = {"app", "hc", "other"};
    EXPECT_THAT(publications(), ElementsAreArray({set(cell(2, 5, row), 0), set(cell(2, 2, row), ""),
                                                  set(cell(2, 3, row), ""), set(cell(2, 4, row), "")}));
    other->remove();
}

// The constructor sets the template, before the row is announced.
TEST_F(SimpleMetricTest, AMetricCreatedAgainFillsTheOldRowBeforeItIsAnnouncedAgain)
{
    settle();
    publications();
    vigil::SimpleMetric* newer = check->createSimpleMetric("db");
    const std::vector<std::string> row = {set(cell(2, 2, metricRow), ""), set(cell(2, 3, metricRow), ""),
                                          set(cell(2, 4, metricRow), "")};
    EXPECT_THAT(publications(),
                ElementsAre(row[0], row[1], row[2], set(cell(2, 5, metricRow), 0), row[0], row[1], row[2]));
    newer->remove();
}

TEST_F(SimpleMetricTest, InfoAndTemplatePublishTheRowButStatusAndSwitchDoNot)
{
    settle();
    publications();
    metric->setStatus(HealthStatus::Ok);
    metric->setPerformanceDataEnabled(true);
    EXPECT_THAT(publications(), IsEmpty());
    const std::vector<std::string> row = {set(cell(2, 2, metricRow), ""), set(cell(2, 3, metricRow), ""),
                                          set(cell(2, 4, metricRow), "")};
    metric->setInfo("info");
    EXPECT_EQ(publications(), row);
    metric->setTemplate("text");
    EXPECT_EQ(publications(), row);
}

TEST_F(SimpleMetricTest, PerformanceDataIsOffUntilItIsEnabled)
{
    settle();
    publications();
    check->update();
    EXPECT_THAT(publications(), Not(Contains(StartsWith("127.3.1.200.4.4."))));
}

TEST_F(SimpleMetricTest, PerformanceDataIsTheNumberOfTheStatus)
{
    settle();
    metric->setPerformanceDataEnabled(true);
    for (const HealthStatus status :
         {HealthStatus::Ok, HealthStatus::Warning, HealthStatus::Critical, HealthStatus::Unknown}) {
        metric->setStatus(status);
        publications();
        check->update();
        std::vector<std::string> lines = publications();
        ASSERT_EQ(lines.size(), 9u);
        lines.erase(lines.begin(), lines.begin() + 4);
        EXPECT_THAT(lines,
                    ElementsAreArray({set(cell(4, 1, metricRow), "db"),
                                      set(cell(4, 2, metricRow), std::to_string(static_cast<int>(status))),
                                      set(cell(4, 3, metricRow), ""), set(cell(4, 4, metricRow), ""),
                                      set(cell(4, 5, metricRow), "")}));
    }
}

TEST_F(SimpleMetricTest, ANumberThatIsNoStatusBecomesUnknown)
{
    settle();
    for (const int number : {-1, 4, 1000}) {
        metric->setStatus(HealthStatus::Ok);
        check->update();
        metric->setStatus(static_cast<HealthStatus>(number));
        EXPECT_EQ(metric->getStatus(), HealthStatus::Unknown) << number;
        publications();
        check->update();
        EXPECT_EQ(check->getStatus(), HealthStatus::Unknown) << number;
        const std::vector<std::string> lines = publications();
        EXPECT_THAT(lines, Contains(set(cell(1, 3, {"app", "hc"}), 3)));
        EXPECT_THAT(lines, Contains(set(cell(3, 1, metricRow), 3)));
    }
}

} // namespace
