// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/raii.h>

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/LibraryTest.h"
#include "support/Publications.h"
#include "support/ShownCells.h"

using support::cell;
using support::set;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using vigil::CheckHandle;
using vigil::HealthStatus;
using vigil::Range;
using vigil::ScalarHandle;
using vigil::SimpleHandle;

namespace {

class HandleTest : public support::LibraryTest
{
protected:
    HandleTest() { start(); }

    std::vector<std::string> shownTexts()
    {
        settle();
        std::vector<std::string> lines;
        const support::ShownCells cells(service.frames());
        for (const auto& shown : cells.cells()) {
            if (shown.second.rfind("99.99", 0) != 0)
                lines.push_back(shown.second);
        }
        return lines;
    }

    static std::string firstResult(const CheckHandle& check)
    {
        const std::vector<vigil::Result> results = check.getResults();
        return results.empty() ? "no result" : results[0].getSummary();
    }
};

TEST_F(HandleTest, TheEndOfTheScopeWithdrawsEverything)
{
    const CheckHandle other("app", "other");
    {
        CheckHandle check("app", "hc");
        ScalarHandle cpu(check, "cpu");
        SimpleHandle database(check, "db");
        check.setFunction(1, [] {});
        check.update();
        EXPECT_THAT(shownTexts(), Contains(set(cell(1, 3, {"app", "hc"}), 3)));
    }
    EXPECT_THAT(shownTexts(),
                ElementsAre(set(cell(1, 3, {"app", "other"}), 3), set(cell(1, 4, {"app", "other"}), "")));
}

TEST_F(HandleTest, TheLastCheckStopsTheLibrary)
{
    CheckHandle("app", "hc").setDescription("D");
    EXPECT_EQ(log.count("[VigilSnmp::cleanup] Cleanup."), 1);
}

TEST_F(HandleTest, AMetricIsWithdrawnWhileItsCheckStays)
{
    CheckHandle check("app", "hc");
    {
        ScalarHandle cpu(check, "cpu");
        check.update();
        EXPECT_EQ(firstResult(check), "cpu is 0.");
    }
    check.update();
    EXPECT_THAT(check.getResults(), IsEmpty());
    EXPECT_THAT(shownTexts(),
                ElementsAre(set(cell(1, 3, {"app", "hc"}), 3), set(cell(1, 4, {"app", "hc"}), " - ")));
}

TEST_F(HandleTest, ACheckMayEndBeforeItsMetrics)
{
    CheckHandle other("app", "other");
    CheckHandle check("app", "hc");
    ScalarHandle cpu(check, "cpu");
    SimpleHandle database(check, "db");
    cpu.setRangeHandler([](vigil::RangeKind, const Range&) { return true; });
    cpu.setValue(5);
    check.reset();
    EXPECT_FALSE(check);
    cpu.setValue(6);
    cpu.setUnit("%");
    cpu.setUnknown("gone");
    cpu.setRangeHandler([](vigil::RangeKind, const Range&) { return true; });
    cpu.clearRangeHandler();
    database.set(HealthStatus::Ok, "x");
    EXPECT_EQ(cpu.getValue(), 5);
    EXPECT_EQ(cpu.getName(), "cpu");
    EXPECT_THAT(shownTexts(),
                ElementsAre(set(cell(1, 3, {"app", "other"}), 3), set(cell(1, 4, {"app", "other"}), "")));
}

TEST_F(HandleTest, AMovedHandleKeepsItsObjectAndTheOldOneIsEmpty)
{
    CheckHandle first("app", "hc");
    ScalarHandle cpu(first, "cpu");
    CheckHandle check(std::move(first));
    ScalarHandle moved;
    moved = std::move(cpu);
    EXPECT_FALSE(first); // NOLINT: the state after a move is a promise
    EXPECT_FALSE(cpu);   // NOLINT
    moved.setValue(7);
    check.update();
    EXPECT_EQ(firstResult(check), "cpu is 7.");
    EXPECT_THROW(first.update(), std::logic_error);
    EXPECT_THROW(cpu.setValue(1), std::logic_error);
    EXPECT_THROW(ScalarHandle(first, "x"), std::logic_error);
}

TEST_F(HandleTest, AssignmentEndsThePreviousObject)
{
    CheckHandle check("app", "hc");
    ScalarHandle metric(check, "a");
    metric = ScalarHandle(check, "b");
    check.update();
    EXPECT_EQ(firstResult(check), "b is 0.");
    ScalarHandle& same = metric;
    metric = std::move(same);
    EXPECT_EQ(metric.getName(), "b");
}

TEST_F(HandleTest, HandlesLiveInContainers)
{
    CheckHandle check("app", "hc");
    std::vector<ScalarHandle> metrics;
    for (const char* name : {"a", "b", "c"})
        metrics.emplace_back(check, name);
    metrics.erase(metrics.begin());
    check.update();
    EXPECT_EQ(check.getResults().size(), 2u);
}

// The rows belong to the name: the end of one of two metrics would withdraw those of the other.
TEST_F(HandleTest, ANameIsTakenOnceAndIsFreeAfterTheEnd)
{
    CheckHandle check("app", "hc");
    ScalarHandle cpu(check, "cpu");
    EXPECT_THROW(ScalarHandle(check, "cpu"), std::invalid_argument);
    EXPECT_THROW(SimpleHandle(check, "cpu"), std::invalid_argument);
    cpu.reset();
    const SimpleHandle again(check, "cpu");
    check.update();
    EXPECT_EQ(firstResult(check), "cpu is UNKNOWN, .");
}

TEST_F(HandleTest, AnUnknownScalarSaysWhyAndHasNoNumberUntilItsNextValue)
{
    CheckHandle check("app", "hc");
    ScalarHandle cpu(check, "cpu");
    cpu.setValue(5);
    check.update();
    EXPECT_THAT(shownTexts(), Contains(set(cell(4, 2, {"app", "hc", "cpu"}), "5")));
    cpu.setUnknown("the sensor is unplugged");
    check.update();
    EXPECT_EQ(check.getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(firstResult(check), "cpu is UNKNOWN, the sensor is unplugged.");
    EXPECT_THAT(shownTexts(), testing::Not(Contains(set(cell(4, 2, {"app", "hc", "cpu"}), "5"))));
    cpu.setValue(6);
    check.update();
    EXPECT_EQ(check.getStatus(), HealthStatus::Ok);
    EXPECT_EQ(firstResult(check), "cpu is 6.");
}

TEST_F(HandleTest, SettersAndGettersReachTheMetric)
{
    CheckHandle check("app", "hc");
    check.setDescription("D");
    EXPECT_EQ(check.getDescription(), "D");
    EXPECT_EQ(check.getFirstKey(), "app");
    EXPECT_EQ(check.getSecondKey(), "hc");
    ScalarHandle cpu(check, "cpu");
    cpu.setUnit("%");
    cpu.setWarningRange(Range::CreateThresholdAbove(1));
    cpu.setCriticalRange(Range::CreateThresholdAbove(2));
    cpu.setPerformanceDataEnabled(false);
    cpu.setValue(3);
    SimpleHandle database(check, "db");
    database.setTemplate("{info}");
    database.setPerformanceDataEnabled(true);
    database.set(HealthStatus::Warning, "slow");
    check.update();
    EXPECT_EQ(check.getSummary(), "D - out of critical range: cpu is 3%. slow");
    EXPECT_EQ(cpu.getUnit(), "%");
    EXPECT_EQ(cpu.getWarningRange().toString(), "~:1");
    EXPECT_EQ(cpu.getCriticalRange().toString(), "~:2");
    EXPECT_EQ(database.getStatus(), HealthStatus::Warning);
    EXPECT_EQ(cpu.get()->getName(), "cpu");
    EXPECT_EQ(check.get()->getFirstKey(), "app");
}

TEST_F(HandleTest, AFunctionHasANumberFromOneToFive)
{
    CheckHandle check("app", "hc");
    EXPECT_THROW(check.setFunction(0, [] {}), std::out_of_range);
    EXPECT_THROW(check.setFunction(6, [] {}), std::out_of_range);
}

} // namespace
