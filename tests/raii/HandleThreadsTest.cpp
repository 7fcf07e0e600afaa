// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Several threads use one check through handles while a manager sets values. The thread sanitizer judges it.

#include <vigil/raii.h>

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/wire/Protocol.h"
#include "support/LibraryTest.h"
#include "support/Publications.h"
#include "support/ShownCells.h"

using support::cell;
using testing::IsEmpty;
using vigil::CheckHandle;
using vigil::HealthStatus;
using vigil::Range;
using vigil::ScalarHandle;
using vigil::SimpleHandle;

namespace {

constexpr int rounds = 200;

class HandleThreadsTest : public support::LibraryTest
{
protected:
    HandleThreadsTest()
    {
        start();
        keeper = CheckHandle("app", "keeper");
        check = CheckHandle("app", "hc");
        cpu = ScalarHandle(check, "cpu");
        database = SimpleHandle(check, "db");
    }

    static void runAtOnce(const std::vector<std::function<void(int)>>& work)
    {
        std::vector<std::thread> threads;
        for (const auto& each : work) {
            threads.emplace_back([&each] {
                for (int round = 0; round < rounds; ++round)
                    each(round);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }

    void sendSets(int round)
    {
        const std::string range = std::to_string(round) + ':';
        service.send(base::SnmpStringType, support::encodedString(warningCell, range, 7), base::Validation);
        service.send(base::SnmpStringType, support::encodedString(warningCell, range), base::PlainValue);
        service.send(base::SnmpIntType, support::encodedInt(cell(5, 1, {"app", "hc"}), 2), base::PlainValue);
    }

    std::vector<std::string> cellsOf(const std::string& tree)
    {
        settle();
        std::vector<std::string> lines;
        const support::ShownCells cells(service.frames());
        for (const auto& shown : cells.cells()) {
            if (shown.first.find(tree) != std::string::npos)
                lines.push_back(shown.second);
        }
        return lines;
    }

    const std::string warningCell = cell(2, 3, {"app", "hc", "cpu"});
    CheckHandle keeper;
    CheckHandle check;
    ScalarHandle cpu;
    SimpleHandle database;
};

TEST_F(HandleThreadsTest, ThreadsSetValuesAndUpdateAtOnce)
{
    check.setFunction(1, [this] {
        cpu.setUnit("%");
        database.setInfo("refreshed");
        check.update();
    });
    cpu.setRangeHandler([](vigil::RangeKind, const Range&) { return true; });
    runAtOnce({[this](int round) { cpu.setValue(round); },
               [this](int round) { database.set(HealthStatus::Warning, std::to_string(round)); },
               [this](int) { check.update(); },
               [this](int) { check.setDescription(check.getSummary().substr(0, 5)); },
               [this](int round) { sendSets(round); }});
    settle();
    cpu.setValue(1000);
    cpu.setWarningRange(Range::CreateThresholdAbove(1));
    check.update();
    EXPECT_EQ(check.getStatus(), HealthStatus::Warning);
    EXPECT_EQ(cpu.getValue(), 1000);
}

// An update of one thread must not publish a metric that another thread is removing.
TEST_F(HandleThreadsTest, MetricsComeAndGoBesideUpdatesAndLeaveNoRow)
{
    check.setFunction(1, [this] { check.update(); });
    runAtOnce({[this](int) { check.update(); },
               [this](int) {
                   ScalarHandle passing(check, "passing");
                   passing.setRangeHandler([](vigil::RangeKind, const Range&) { return true; });
                   passing.setValue(1);
               },
               [this](int) { SimpleHandle(check, "other").setStatus(HealthStatus::Ok); },
               [this](int round) { sendSets(round); }});
    const std::string passing = cell(3, 1, {"passing"}).substr(cell(3, 1, {}).size());
    EXPECT_THAT(cellsOf(passing), IsEmpty());
}

TEST_F(HandleThreadsTest, AHandlerMayBeReplacedBesideItsCalls)
{
    std::atomic<int> calls{0};
    runAtOnce({[&](int round) { sendSets(round); },
               [&](int round) {
                   auto alive = std::make_shared<int>(round);
                   check.setFunction(1, [alive, &calls] { calls += *alive >= 0 ? 1 : 0; });
               },
               [&](int round) {
                   auto alive = std::make_shared<int>(round);
                   cpu.setRangeHandler([alive](vigil::RangeKind, const Range&) { return *alive >= 0; });
                   if (round % 3 == 0)
                       cpu.clearRangeHandler();
               }});
    settle();
    check.setFunction(1, nullptr);
}

TEST_F(HandleThreadsTest, ChecksAndMetricsEndOnDifferentThreads)
{
    runAtOnce({[](int round) {
        CheckHandle passing("app", "passing");
        std::vector<ScalarHandle> metrics;
        for (const char* name : {"a", "b", "c"})
            metrics.emplace_back(passing, name);
        std::thread user([&] {
            for (ScalarHandle& metric : metrics)
                metric.setUnit(std::to_string(round));
            metrics.clear();
        });
        passing.update();
        passing.reset();
        user.join();
    }});
    const std::string passing = cell(1, 3, {"passing"}).substr(cell(1, 3, {}).size());
    EXPECT_THAT(cellsOf(passing), IsEmpty());
}

} // namespace
