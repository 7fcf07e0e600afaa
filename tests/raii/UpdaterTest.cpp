// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/raii.h>

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <future>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/LibraryTest.h"
#include "support/Publications.h"

using support::cell;
using support::set;
using vigil::CheckHandle;
using vigil::HealthStatus;
using vigil::Reading;
using vigil::ScalarHandle;
using vigil::SimpleHandle;
using vigil::Updater;

namespace {

constexpr std::chrono::hours never(1);

class UpdaterTest : public support::LibraryTest
{
protected:
    UpdaterTest()
    {
        start();
        check = CheckHandle("app", "hc");
        cpu = ScalarHandle(check, "cpu");
        database = SimpleHandle(check, "db");
    }

    bool waitForPublication(const std::string& line)
    {
        return service.waitForFrame([&](const auto& frame) { return support::describe(frame) == line; });
    }

    bool waitForText(const char* metric, const std::string& text)
    {
        return waitForPublication(set(cell(3, 2, {"app", "hc", metric}), text));
    }

    CheckHandle check;
    ScalarHandle cpu;
    SimpleHandle database;
};

TEST_F(UpdaterTest, TheFirstTurnBeginsWithTheStartAndReadsEverything)
{
    Updater updater(never);
    updater.add(cpu, [] { return 5; });
    updater.add(database, [] { return Reading{HealthStatus::Ok, "replies"}; });
    updater.start();
    EXPECT_TRUE(waitForText("db", "db is OK, replies."));
    EXPECT_TRUE(waitForText("cpu", "cpu is 5."));
}

TEST_F(UpdaterTest, TurnsFollowEachOther)
{
    std::atomic<int> value{0};
    Updater updater(std::chrono::milliseconds(1));
    updater.add(cpu, [&] { return ++value; });
    updater.start();
    updater.start(); // has no effect
    EXPECT_TRUE(waitForText("cpu", "cpu is 3."));
}

TEST_F(UpdaterTest, ATurnComesAtOnceOnRequest)
{
    std::atomic<int> value{0};
    Updater updater(never);
    updater.add(cpu, [&] { return ++value; });
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is 1."));
    check.setFunction(1, [&] { updater.updateNow(); });
    commit(cell(5, 1, {"app", "hc"}), 2);
    EXPECT_TRUE(waitForText("cpu", "cpu is 2."));
}

/// Each request used to put the regular turns off by an interval.
TEST_F(UpdaterTest, RequestsDoNotPutOffTheRegularTurns)
{
    constexpr int requests = 100;
    std::atomic<int> value{0};
    const auto waitForTurn = [&](int turn) {
        return waitForText("cpu", "cpu is " + std::to_string(turn) + '.');
    };
    Updater updater(std::chrono::seconds(1)); // as many intervals as requests are longer than any wait here
    updater.add(cpu, [&] { return ++value; });
    updater.start();
    for (int turn = 1; turn <= requests; ++turn) {
        ASSERT_TRUE(waitForTurn(turn));
        updater.updateNow();
    }
    EXPECT_TRUE(waitForTurn(requests + 3)); // the last request and at least one regular turn
}

TEST_F(UpdaterTest, AFunctionThatThrowsMakesItsMetricUnknownUntilItReturns)
{
    std::atomic<int> turn{0};
    Updater updater(std::chrono::milliseconds(1));
    updater.add(cpu, [&]() -> double {
        if (++turn < 3)
            throw std::runtime_error("no sensor");
        return 7;
    });
    updater.add(database, []() -> Reading { throw 5; });
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is UNKNOWN, no sensor."));
    EXPECT_TRUE(waitForText("db", "db is UNKNOWN, its function failed."));
    EXPECT_TRUE(waitForText("cpu", "cpu is 7."));
}

TEST_F(UpdaterTest, AValueThatIsNoNumberMakesItsMetricUnknown)
{
    std::atomic<bool> isBroken{true};
    Updater updater(std::chrono::milliseconds(1));
    updater.add(cpu, [&] { return isBroken ? std::numeric_limits<double>::quiet_NaN() : 7; });
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is UNKNOWN, its value is not a number."));
    isBroken = false;
    EXPECT_TRUE(waitForText("cpu", "cpu is 7."));
}

TEST_F(UpdaterTest, EndsAtOnceBetweenTurns)
{
    Updater updater(never);
    updater.add(check);
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is 0."));
    // The test's time-out is shorter than the interval.
}

TEST_F(UpdaterTest, RefusesAnIntervalThatWouldNotLetTheProcessorRest)
{
    EXPECT_THROW(Updater(std::chrono::milliseconds(0)), std::invalid_argument);
    EXPECT_THROW(Updater(std::chrono::milliseconds(-1)), std::invalid_argument);
}

TEST_F(UpdaterTest, TheLongestIntervalDoesNotOverflow)
{
    std::atomic<int> calls{0};
    Updater updater((std::chrono::milliseconds::max)());
    updater.add(cpu, [&] { return ++calls; });
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is 1."));
    updater.updateNow();
    EXPECT_TRUE(waitForText("cpu", "cpu is 2."));
    EXPECT_EQ(calls, 2);
}

TEST_F(UpdaterTest, NeedNotStart)
{
    Updater updater(never);
    updater.add(cpu, []() -> int { throw std::logic_error("must not be called"); });
    updater.updateNow();
}

TEST_F(UpdaterTest, TheEndWaitsForAFunctionInProgress)
{
    std::promise<void> reached;
    std::promise<void> goOn;
    std::atomic<bool> isDone{false};
    {
        Updater updater(never);
        updater.add(cpu, [&] {
            reached.set_value();
            goOn.get_future().wait();
            isDone = true;
            return 1;
        });
        updater.start();
        reached.get_future().wait();
        goOn.set_value();
    }
    EXPECT_TRUE(isDone);
}

TEST_F(UpdaterTest, MetricsAndChecksMayEndBeforeIt)
{
    std::atomic<int> calls{0};
    Updater updater(std::chrono::milliseconds(1));
    updater.add(cpu, [&] { return ++calls; });
    updater.add(database, [] { return Reading{HealthStatus::Ok, "x"}; });
    updater.add(check);
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is 2."));
    cpu.reset();
    check.update();
    EXPECT_EQ(check.getResults().size(), 1u);
    check.reset();
    database.reset();
    CheckHandle again("app", "again");
    ScalarHandle load(again, "load");
    updater.add(load, [] { return 4; });
    EXPECT_TRUE(waitForPublication(set(cell(3, 2, {"app", "again", "load"}), "load is 4.")));
}

TEST_F(UpdaterTest, MayBeDestroyedByItsOwnFunction)
{
    std::promise<void> started;
    std::promise<void> done;
    auto updater = std::make_unique<Updater>(std::chrono::milliseconds(1));
    updater->add(cpu, [&] {
        started.get_future().wait();
        updater.reset();
        done.set_value();
        return 1;
    });
    updater->start();
    started.set_value();
    done.get_future().wait();
}

TEST_F(UpdaterTest, MayBeDestroyedInsideACallback)
{
    std::promise<void> done;
    auto updater = std::make_unique<Updater>(std::chrono::milliseconds(1));
    updater->add(cpu, [] { return 1; });
    updater->start();
    check.setFunction(1, [&] {
        updater.reset();
        done.set_value();
    });
    commit(cell(5, 1, {"app", "hc"}), 2);
    done.get_future().wait();
}

TEST_F(UpdaterTest, AFunctionMayCreateAndEndMetrics)
{
    std::unique_ptr<ScalarHandle> created;
    Updater updater(std::chrono::milliseconds(1));
    std::atomic<int> turns{0};
    updater.add(cpu, [&] {
        if (++turns % 2 == 1)
            created = std::make_unique<ScalarHandle>(check, "created");
        else
            created.reset();
        return turns.load();
    });
    updater.start();
    EXPECT_TRUE(waitForText("cpu", "cpu is 4."));
}

} // namespace
