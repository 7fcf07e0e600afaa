// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Threads, an updater and callbacks change the same checks through the handles of both interfaces, while a
// manager sets ranges and triggers functions, and the service stalls or hangs up. Whenever all of them rest,
// the service must have exactly what the getters say. Nothing is published again before the comparison.

#include <vigil/raii.h>
#include <vigil/testing/FakeService.h>
#include <vigil/vigil_c.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <QtGlobal>

#include "support/Deadline.h"
#include "support/LibraryLog.h"
#include "support/Load.h"
#include "support/Publications.h"

using support::cell;
using vigil::CheckHandle;
using vigil::HealthStatus;
using vigil::Range;
using vigil::ScalarHandle;
using vigil::SimpleHandle;
using vigil::test::PublishedCell;
using vigil::test::PublishedTable;

namespace {

constexpr int workers = 4;
constexpr const char* enterprise = "1.3.6.1.4.1.32473.";
constexpr const char* stressKey = "stress";

using Index = std::vector<std::string>;
using CellLines = std::map<std::string, std::string>; // as in ShownCells

class RandomSource
{
public:
    explicit RandomSource(unsigned int seed) : m_engine(seed) {}
    int number(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned int>(limit)); }
    bool oneOf(int chances) { return number(chances) == 0; }

    /// Mostly short. The long ones fill the connection of a service that stalls.
    std::string text()
    {
        const int length = oneOf(10) ? number(20'000) : number(20);
        return std::string(static_cast<std::size_t>(length), static_cast<char>('a' + number(26)));
    }

    Range range() { return Range::CreateRange(number(50), 50 + number(50)); }

    std::string rangeText() { return std::to_string(number(50)) + ':' + std::to_string(50 + number(50)); }

private:
    std::mt19937 m_engine;
};

/// The cells that a service must show.
class Expected
{
public:
    template <typename Value>
    void add(int table, int column, const Index& index, const Value& value)
    {
        const std::string oid = cell(table, column, index);
        m_cells[oid] = support::set(oid, value);
    }

    void addAll(const CellLines& cells) { m_cells.insert(cells.begin(), cells.end()); }

    void addFunctions(const Index& index)
    {
        for (int column = 1; column <= 4; ++column)
            add(5, column, index, 1);
        add(5, 5, index, std::string());
    }

    void addMetric(const Index& index, const std::string& unit, const std::string& warning,
                   const std::string& critical, bool isWritable)
    {
        add(2, 2, index, unit);
        add(2, 3, index, warning);
        add(2, 4, index, critical);
        add(2, 5, index, isWritable ? 1 : 0);
    }

    void addResult(const Index& index, HealthStatus status, const std::string& summary)
    {
        add(3, 1, index, static_cast<int>(status));
        add(3, 2, index, summary);
    }

    /// The metric may have been created again since the last update; then it has no result.
    void addPossibleResult(const Index& index, HealthStatus status, const std::string& summary)
    {
        addResult(index, status, summary);
        m_possible.insert(cell(3, 1, index));
        m_possible.insert(cell(3, 2, index));
    }

    const CellLines& cells() const { return m_cells; }
    const std::set<std::string>& possible() const { return m_possible; }

private:
    CellLines m_cells;
    std::set<std::string> m_possible;
};

// --- Checks of the C++ handles

/// A check whose metrics any thread may use. Each thread has a further metric that comes and goes.
class SharedCheck
{
public:
    explicit SharedCheck(const std::string& key)
        : m_key(key), m_check(stressKey, key), m_scalar(m_check, "scalar"), m_simple(m_check, "simple")
    {
        m_check.setFunction(1, [this] { actInCallback(); });
        m_check.setFunction(5, [this] { actInCallback(); });
        m_scalar.setRangeHandler([](vigil::RangeKind, const Range& range) { return range.isEnabled(); },
                                 [this](vigil::RangeKind, const Range&) { actInCallback(); });
    }

    const std::string& key() const { return m_key; }

    void addTo(vigil::Updater& updater)
    {
        updater.add(m_scalar, [n = 0]() mutable {
            if (++n % 7 == 0)
                throw std::runtime_error("no sensor");
            return n % 120;
        });
        updater.add(m_simple, [n = 0]() mutable {
            ++n;
            return vigil::Reading{n % 3 == 0 ? HealthStatus::Critical : HealthStatus::Ok, std::to_string(n)};
        });
    }

    void act(RandomSource& dice, int thread)
    {
        switch (dice.number(12)) {
        case 0:
            return m_scalar.setUnit(dice.text());
        case 1:
            return m_scalar.setWarningRange(dice.range());
        case 2:
            return m_scalar.setCriticalRange(dice.range());
        case 3:
            return m_scalar.setPerformanceDataEnabled(dice.oneOf(2));
        case 4:
            return m_simple.set(HealthStatus::Warning, dice.text());
        case 5:
            return m_simple.setPerformanceDataEnabled(dice.oneOf(2));
        case 6:
            return m_check.setDescription(dice.text());
        case 7:
        case 8:
            return changeFurther(dice, thread);
        case 9:
            return m_scalar.setUnknown("no sensor");
        default:
            m_scalar.setValue(dice.number(120));
            return m_check.update();
        }
    }

    void expect(Expected& expected) const
    {
        const Index index = {stressKey, m_key};
        expected.add(1, 3, index, static_cast<int>(m_check.getStatus()));
        expected.add(1, 4, index, m_check.getSummary());
        expected.addFunctions(index);
        const std::vector<vigil::Result> results = m_check.getResults();
        expectScalar(expected, m_scalar, true);
        expected.addMetric(of("simple"), std::string(), std::string(), std::string(), false);
        for (const Further& further : m_further) {
            if (further.metric)
                expectScalar(expected, further.metric, further.isWritable);
        }
        for (const vigil::Result& result : results) {
            if (isLive(result.getName()))
                expected.addResult(of(result.getName()), result.getStatus(), result.getSummary());
        }
    }

private:
    struct Further
    {
        ScalarHandle metric;
        bool isWritable = false;
        int created = 0;
    };

    Index of(const std::string& metric) const { return {stressKey, m_key, metric}; }

    bool isLive(const std::string& name) const
    {
        return name == "scalar" || name == "simple" ||
               std::any_of(m_further.begin(), m_further.end(), [&](const Further& further) {
                   return further.metric && further.metric.getName() == name;
               });
    }

    void expectScalar(Expected& expected, const ScalarHandle& metric, bool isWritable) const
    {
        expected.addMetric(of(metric.getName()), metric.getUnit(), metric.getWarningRange().toString(),
                           metric.getCriticalRange().toString(), isWritable);
    }

    void changeFurther(RandomSource& dice, int thread)
    {
        Further& further = m_further.at(static_cast<std::size_t>(thread));
        if (further.metric && dice.oneOf(3)) {
            further.metric.reset();
            further.isWritable = false;
        } else if (!further.metric) {
            further.metric =
                ScalarHandle(m_check, std::to_string(thread) + '.' + std::to_string(++further.created));
        } else if (!further.isWritable) {
            further.metric.setRangeHandler([](vigil::RangeKind, const Range&) { return false; });
            further.isWritable = true;
        } else {
            further.metric.setUnit(dice.text());
        }
    }

    /// Runs on the client thread, one call at a time.
    void actInCallback()
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(m_callbackDice.number(6))); // the others go on
        switch (m_callbackDice.number(4)) {
        case 0:
            return m_scalar.setUnit(std::to_string(m_callbackDice.number(1000)));
        case 1:
            return m_simple.set(HealthStatus::Ok, std::to_string(m_callbackDice.number(1000)));
        case 2:
            return m_scalar.setCriticalRange(m_callbackDice.range());
        default:
            m_scalar.setValue(m_callbackDice.number(120));
            return m_check.update();
        }
    }

    const std::string m_key;
    RandomSource m_callbackDice{7};
    CheckHandle m_check;
    ScalarHandle m_scalar;
    SimpleHandle m_simple;
    std::array<Further, workers> m_further;
};

// --- Checks of the C interface

std::string textOf(const std::function<vigil_code(char*, std::size_t*)>& read)
{
    std::size_t size = 0;
    if (read(nullptr, &size) != VIGIL_OK)
        return "no text";
    std::string text(size, '\0');
    EXPECT_EQ(read(&text[0], &size), VIGIL_OK);
    text.resize(size - 1);
    return text;
}

std::string rangeTextOf(vigil_metric* metric, int kind)
{
    vigil_range range{};
    EXPECT_EQ(vigil_scalar_range(metric, kind, &range), VIGIL_OK);
    return textOf([&](char* buffer, std::size_t* size) { return vigil_range_text(&range, buffer, size); });
}

/// The check and its metrics come and go, by any thread.
class FleetingCheck
{
public:
    explicit FleetingCheck(std::string key) : m_key(std::move(key)) {}
    ~FleetingCheck()
    {
        for (const auto& metric : m_metrics)
            vigil_metric_free(metric);
        vigil_check_free(m_check);
    }
    FleetingCheck(const FleetingCheck&) = delete;
    FleetingCheck& operator=(const FleetingCheck&) = delete;

    void act(RandomSource& dice)
    {
        const auto place = static_cast<std::size_t>(dice.number(static_cast<int>(m_metrics.size())));
        vigil_metric* const metric = m_metrics.at(place);
        const vigil_range range = {VIGIL_RANGE_NORMAL, 1.0 * dice.number(50), 50.0 + dice.number(50)};
        switch (dice.number(12)) {
        case 0:
            return createCheck();
        case 1:
            return dice.oneOf(20) ? ignore(vigil_check_free(m_check)) : createMetric(place);
        case 2:
            return createMetric(place);
        case 3:
            return ignore(vigil_metric_free(metric));
        case 4:
            return ignore(vigil_scalar_set_unit(metric, dice.text().c_str()));
        case 5:
            return ignore(vigil_scalar_set_range(metric, dice.number(2), &range));
        case 6:
            return ignore(vigil_check_set_description(m_check, dice.text().c_str()));
        case 7:
            return ignore(vigil_scalar_set_unknown(metric, "no sensor"));
        case 8:
            return ignore(vigil_metric_set_performance_data(metric, dice.number(2)));
        default:
            ignore(vigil_scalar_set_value(metric, dice.number(120)));
            return ignore(vigil_check_update(m_check));
        }
    }

    void expect(Expected& expected) const
    {
        const Index index = {stressKey, m_key};
        vigil_check* const check = m_check;
        vigil_health status = -1;
        if (vigil_check_status(check, &status) != VIGIL_OK)
            return;
        expected.add(1, 3, index, status);
        expected.add(1, 4, index, textOf([&](char* buffer, std::size_t* size) {
                         return vigil_check_summary(check, buffer, size);
                     }));
        Results results{this, &expected, {}};
        for (std::size_t place = 0; place < m_metrics.size(); ++place)
            expectMetric(expected, results, place);
        vigil_check_results(check, &FleetingCheck::addResult, &results);
    }

private:
    struct Results
    {
        const FleetingCheck* check;
        Expected* expected;
        std::vector<std::string> live;
    };

    static void ignore(vigil_code) {} // another thread may have freed it

    void createCheck()
    {
        vigil_check* check = nullptr;
        if (vigil_check_create(stressKey, m_key.c_str(), &check) == VIGIL_OK)
            m_check = check;
    }

    void createMetric(std::size_t place)
    {
        vigil_metric* metric = nullptr;
        if (vigil_scalar_create(m_check, std::to_string(place).c_str(), &metric) == VIGIL_OK)
            vigil_metric_free(m_metrics.at(place).exchange(metric));
    }

    void expectMetric(Expected& expected, Results& results, std::size_t place) const
    {
        vigil_metric* const metric = m_metrics.at(place);
        if (vigil_metric_set_performance_data(metric, 1) != VIGIL_OK)
            return; // it, or its check, is gone
        const std::string name = std::to_string(place);
        results.live.push_back(name);
        const auto unit = [&](char* buffer, std::size_t* size) {
            return vigil_scalar_unit(metric, buffer, size);
        };
        expected.addMetric({stressKey, m_key, name}, textOf(unit), rangeTextOf(metric, VIGIL_WARNING_RANGE),
                           rangeTextOf(metric, VIGIL_CRITICAL_RANGE), false);
    }

    static void addResult(void* user, const char* name, vigil_health status, const char* summary)
    {
        const Results& results = *static_cast<Results*>(user);
        // One that was removed since the last update has no row.
        if (std::find(results.live.begin(), results.live.end(), name) != results.live.end())
            results.expected->addPossibleResult({stressKey, results.check->m_key, name},
                                                static_cast<HealthStatus>(status), summary);
    }

    const std::string m_key;
    std::atomic<vigil_check*> m_check{nullptr};
    std::array<std::atomic<vigil_metric*>, 4> m_metrics{};
};

// --- Values of the facade, some with a wish for a notification

class TrapPublisher
{
public:
    explicit TrapPublisher(int thread) : m_tree("8." + std::to_string(thread)) {}

    void act(RandomSource& dice)
    {
        auto& snmp = vigil::VigilSnmpInterface::instance();
        const std::string oid = m_tree + (dice.oneOf(20) ? "" : "." + std::to_string(1 + dice.number(10)));
        const vigil::Oid full = vigil::Oid::fromStdString(enterprise + oid);
        const int number = dice.number(1'000'000);
        switch (dice.number(10)) {
        case 0:
            m_said.erase(oid);
            if (oid != m_tree) // the withdrawal of a value takes everything below along
                return snmp.unsetOid(full);
            break;
        case 1:
            if (!dice.oneOf(10))
                break;
            m_said.clear();
            return snmp.unsetOidTree(vigil::Oid::fromStdString(enterprise + m_tree));
        case 2: {
            const std::string text = dice.text();
            m_said[oid] = support::set(oid, text);
            return snmp.sendValue(full, text, dice.number(2));
        }
        default:
            break;
        }
        m_said[oid] = support::set(oid, number);
        snmp.sendValue(full, number, dice.number(2));
    }

    const CellLines& said() const { return m_said; }

private:
    const std::string m_tree;
    CellLines m_said;
};

// --- All of them

class HandlesStress : public testing::Test
{
protected:
    HandlesStress()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        EXPECT_TRUE(service.waitForConnection());
        service.setTimeout(std::chrono::milliseconds(support::deadlineMs));
        for (int thread = 0; thread < workers; ++thread)
            m_publishers.emplace_back(thread);
    }
    ~HandlesStress() override { qInstallMessageHandler(nullptr); }

    /// Everyone works for some steps of the manager, and rests in the end.
    void work(unsigned int seed, int steps, bool isBroken)
    {
        std::atomic<bool> isOver{false};
        vigil::Updater updater(std::chrono::milliseconds(40));
        for (const auto& check : m_shared)
            check->addTo(updater);
        updater.start();
        std::vector<std::thread> all;
        all.reserve(workers);
        for (int thread = 0; thread < workers; ++thread)
            all.emplace_back([this, &isOver, seed, thread] {
                RandomSource dice(seed * 100 + static_cast<unsigned int>(thread));
                while (!isOver)
                    act(dice, thread);
            });
        manage(seed, steps, isBroken);
        isOver = true;
        for (std::thread& thread : all)
            thread.join();
    }

    void expectTrueState()
    {
        Expected expected;
        for (const auto& check : m_shared)
            check->expect(expected);
        for (const auto& check : m_fleeting)
            check->expect(expected);
        for (const TrapPublisher& publisher : m_publishers)
            expected.addAll(publisher.said());
        ASSERT_TRUE(service.settle());
        const PublishedTable table = service.snapshot();
        CellLines shown;
        for (const auto& [oid, value] : table.cells())
            addUnlessPerformanceData(shown, oid.substr(std::string(enterprise).size()), value);
        expectSame(shown, expected);
        expectPerformanceData(table);
    }

    support::LibraryLog log;
    vigil::test::FakeService service;

private:
    void act(RandomSource& dice, int thread)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        switch (dice.number(4)) {
        case 0:
            return m_fleeting.at(static_cast<std::size_t>(dice.number(2)))->act(dice);
        case 1:
            return m_publishers.at(static_cast<std::size_t>(thread)).act(dice);
        default:
            return m_shared.at(static_cast<std::size_t>(dice.number(2)))->act(dice, thread);
        }
    }

    void manage(unsigned int seed, int steps, bool isBroken)
    {
        RandomSource dice(seed * 100 + 99);
        for (int step = 0; step < steps; ++step) {
            const std::string& key = m_shared.at(static_cast<std::size_t>(dice.number(2)))->key();
            if (dice.oneOf(15))
                stallForAWhile(dice);
            else if (dice.oneOf(2))
                service.setWarningRange(stressKey, key, "scalar", dice.rangeText());
            else
                service.triggerFunction(stressKey, key, dice.oneOf(2) ? 1 : 5);
            if (isBroken && step == steps / 2)
                service.breakConnections();
        }
        // The last callback has returned once a further SET has its reply.
        EXPECT_TRUE(service.settle());
        EXPECT_EQ(service.triggerFunction(stressKey, m_shared[0]->key(), 1),
                  vigil::test::SetResult::Accepted);
    }

    void stallForAWhile(RandomSource& dice)
    {
        service.stall();
        std::this_thread::sleep_for(std::chrono::milliseconds(50 + dice.number(300)));
        service.resume();
    }

    static void addUnlessPerformanceData(CellLines& cells, const std::string& oid, const PublishedCell& value)
    {
        static const std::string performanceData = "127.3.1.200.4.4.1.";
        if (oid.rfind(performanceData, 0) != 0)
            cells[oid] = value.isText ? support::set(oid, value.text) : support::set(oid, value.number);
    }

    /// Reports the cells that differ, and no more.
    static void expectSame(const CellLines& shown, const Expected& expected)
    {
        const auto lineOf = [](const CellLines& cells, const std::string& oid) {
            const auto found = cells.find(oid);
            return found == cells.end() ? std::string("nothing") : found->second;
        };
        CellLines all = shown;
        all.insert(expected.cells().begin(), expected.cells().end());
        for (const auto& each : all) {
            const std::string& oid = each.first;
            const std::string is = lineOf(shown, oid);
            const std::string shouldBe = lineOf(expected.cells(), oid);
            if (is != shouldBe && !(is == "nothing" && expected.possible().count(oid) > 0))
                ADD_FAILURE() << oid << "\n  is:        " << is.substr(0, 300)
                              << "\n  should be: " << shouldBe.substr(0, 300);
        }
    }

    /// The number belongs to the text of the same update.
    static void expectPerformanceData(const PublishedTable& table)
    {
        for (const vigil::test::PublishedCheck& check : table.checks()) {
            for (const vigil::test::PublishedMetric& metric : check.metrics) {
                if (metric.value.empty() || metric.name == "simple")
                    continue;
                EXPECT_THAT(metric.summary, testing::HasSubstr(metric.name + " is " + metric.value));
            }
        }
    }

    std::array<std::unique_ptr<SharedCheck>, 2> m_shared{
        {std::make_unique<SharedCheck>("shared0"), std::make_unique<SharedCheck>("shared1")}};
    std::array<std::unique_ptr<FleetingCheck>, 2> m_fleeting{
        {std::make_unique<FleetingCheck>("fleeting0"), std::make_unique<FleetingCheck>("fleeting1")}};
    std::vector<TrapPublisher> m_publishers;
};

TEST_F(HandlesStress, TheServiceHasWhatTheGettersSay)
{
    const unsigned int rounds = support::isFullLoad() ? 1'000 : 30;
    for (unsigned int round = 1; round <= rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        work(round, 20, round % 30 == 0);
        expectTrueState();
    }
}

} // namespace
