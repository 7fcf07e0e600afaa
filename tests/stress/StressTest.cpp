// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Threads of one application use the library at once, as far as the public headers allow. A manager sets
// values, the connection is lost and made, and the library starts and stops. In the end the service must have
// what the application said, and after the last check nothing.

#include <gmock/gmock.h>

#include <QtGlobal>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <vigil/vigil.h>

#include "base/wire/Protocol.h"
#include "support/CheckCells.h"
#include "support/FakeService.h"
#include "support/LibraryLog.h"
#include "support/Load.h"
#include "support/Publications.h"
#include "support/ShownCells.h"

using support::cell;
using support::FakeService;
using testing::IsEmpty;
using vigil::HealthCheck;
using vigil::Oid;
using vigil::Range;
using vigil::ScalarMetric;
using vigil::SimpleMetric;

namespace {

constexpr int owners = 4;
constexpr int publishers = 2;
constexpr int largestNumber = 1000;

using Cells = std::map<std::string, std::string>;

class Dice
{
public:
    explicit Dice(unsigned int seed) : m_engine(seed) {}
    int number(int limit) { return static_cast<int>(m_engine() % static_cast<unsigned int>(limit)); }
    bool oneOf(int chances) { return number(chances) == 0; }

private:
    std::mt19937 m_engine;
};

void rest()
{
    std::this_thread::sleep_for(std::chrono::microseconds(500));
}

std::string textOfRange(int number)
{
    return std::to_string(number) + ':' + std::to_string(number + 1);
}

/// All ranges of this test have bounds with a difference of 1.
bool isWhole(const Range& range)
{
    return !range.isEnabled() || range.getUpperBound() - range.getLowerBound() == 1;
}

std::string keyOfOwner(int owner)
{
    return "owner" + std::to_string(owner);
}

Oid below(const std::string& relative)
{
    return Oid::fromStdString("1.3.6.1.4.1.32473." + relative);
}

// --- Callbacks. Each one may be destroyed as soon as it is switched off, so none outlives that.

/// Publishes an accepted range, as the example of the header does.
class PublishingRangeHandler : public vigil::RangeChangeHandler
{
public:
    bool acceptRangeChange(ScalarMetric* metric, vigil::RangeKind, const Range& range) override
    {
        return isWhole(metric->getWarningRange()) && isWhole(range);
    }

    void rangeChanged(ScalarMetric* metric, vigil::RangeKind kind) override
    {
        metric->setValue(metric->getValue() + 1);
        if (kind == vigil::RangeKind::Warning)
            metric->setWarningRange(metric->getWarningRange());
        else
            metric->setCriticalRange(metric->getCriticalRange());
    }
};

/// Updates a check that no other thread uses.
class UpdatingManagementHandler : public vigil::ManagementHandler
{
public:
    explicit UpdatingManagementHandler(HealthCheck* check = nullptr) : m_check(check) {}

    void managementFunction1() override { update(); }
    void managementFunction2() override { update(); }
    void managementFunction3() override { update(); }
    void managementFunction4() override { update(); }
    void managementFunction5(const std::string&) override { update(); }

private:
    void update()
    {
        ++m_calls;
        if (m_check)
            m_check->update();
    }

    HealthCheck* const m_check;
    int m_calls = 0;
};

class CountingCallback : public vigil::ValueChangedCallback
{
public:
    using ValueChangedCallback::callbackValidateValue;
    using ValueChangedCallback::callbackValueChanged;
    void callbackValueChanged(const Oid& oid, int value) override
    {
        ++m_calls;
        vigil::VigilSnmpInterface::instance().sendValue(oid, value, 1);
    }

private:
    int m_calls = 0;
};

class CountingStateCallback : public vigil::StateInfoCallback
{
public:
    void callbackStateInfo(int) override { ++m_calls; }

private:
    int m_calls = 0;
};

// --- The threads of the application

/// A thread with a check and metrics of its own.
class Owner
{
public:
    Owner(int number, unsigned int seed) : m_key(keyOfOwner(number)), m_dice(seed) { create(); }

    void step()
    {
        switch (m_dice.number(12)) {
        case 0:
            return m_scalar->setUnit(std::to_string(m_dice.number(largestNumber)));
        case 1:
            return m_scalar->setWarningRange(randomRange());
        case 2:
            return m_scalar->setCriticalRange(randomRange());
        case 3:
            return changeSimpleMetric();
        case 4:
            return changeRangeHandler();
        case 5:
            return changeManagementHandler();
        case 6:
            return changeFurtherMetric();
        case 7:
            return read();
        case 8:
            return m_dice.oneOf(10) ? createAgain() : read();
        default:
            m_scalar->setValue(m_dice.number(largestNumber));
            m_check->update();
        }
    }

    /// The check as it stays from now on.
    Cells settle()
    {
        clearRangeHandler();
        clearManagementHandler();
        removeFurtherMetric();
        m_scalar->setPerformanceDataEnabled(true);
        m_scalar->setUnit(" units");
        m_scalar->setWarningRange(randomRange());
        m_scalar->setCriticalRange(randomRange());
        m_scalar->setValue(m_dice.number(largestNumber));
        m_simple->setInfo("settled");
        m_check->setDescription("final");
        m_check->update();
        return cells();
    }

    void destroy()
    {
        clearRangeHandler();
        clearManagementHandler();
        removeFurtherMetric();
        m_scalar->remove();
        m_simple->remove();
        m_check->destroy();
    }

private:
    void create()
    {
        m_check = vigil::createHealthCheck("stress", m_key);
        m_scalar = m_check->createScalarMetric("scalar");
        m_simple = m_check->createSimpleMetric("simple");
        m_hasManagementRow = false;
    }

    void createAgain()
    {
        destroy();
        create();
    }

    Range randomRange()
    {
        const int lower = m_dice.number(largestNumber);
        return Range::CreateRange(lower, lower + 1);
    }

    void changeSimpleMetric()
    {
        m_simple->setStatus(m_dice.oneOf(2) ? vigil::HealthStatus::Critical : vigil::HealthStatus::Ok);
        m_simple->setInfo(std::string(static_cast<std::size_t>(m_dice.number(100)), 'i'));
        m_check->setDescription(std::to_string(m_dice.number(largestNumber)));
    }

    void changeRangeHandler()
    {
        if (m_rangeHandler && m_dice.oneOf(2))
            return clearRangeHandler();
        auto next = std::make_unique<PublishingRangeHandler>();
        m_scalar->setRangeChangeHandler(next.get());
        m_rangeHandler = std::move(next);
    }

    void clearRangeHandler()
    {
        m_scalar->clearRangeChangeHandler();
        m_rangeHandler.reset();
    }

    void changeManagementHandler()
    {
        if (m_managementHandler && m_dice.oneOf(2))
            return clearManagementHandler();
        auto next = std::make_unique<UpdatingManagementHandler>();
        m_check->registerManagementHandler(next.get());
        m_managementHandler = std::move(next);
        m_hasManagementRow = true;
    }

    void clearManagementHandler()
    {
        m_check->unregisterManagementHandler();
        m_managementHandler.reset();
    }

    void changeFurtherMetric()
    {
        if (m_further)
            return removeFurtherMetric();
        m_further = m_check->createScalarMetric("further");
        m_further->setRangeChangeHandler(&m_furtherHandler);
    }

    void removeFurtherMetric()
    {
        if (m_further)
            m_further->remove();
        m_further = nullptr;
    }

    void read()
    {
        EXPECT_TRUE(isWhole(m_scalar->getWarningRange()));
        EXPECT_TRUE(isWhole(m_scalar->getCriticalRange()));
        std::vector<vigil::Result> results;
        m_check->getResults(results);
        EXPECT_LE(results.size(), 3u);
        EXPECT_EQ(m_scalar->getHealthCheck(), m_check);
    }

    Cells cells() const
    {
        support::CheckCells cells;
        cells.addCheck(*m_check);
        if (m_hasManagementRow)
            cells.addManagement(*m_check);
        cells.addMetric(*m_check, *m_scalar);
        cells.addMetric(*m_check, *m_simple);
        cells.addPerformanceData(*m_check, *m_scalar);
        return cells.cells();
    }

    const std::string m_key;
    Dice m_dice;
    HealthCheck* m_check = nullptr;
    ScalarMetric* m_scalar = nullptr;
    SimpleMetric* m_simple = nullptr;
    ScalarMetric* m_further = nullptr;
    PublishingRangeHandler m_furtherHandler;
    std::unique_ptr<PublishingRangeHandler> m_rangeHandler;
    std::unique_ptr<UpdatingManagementHandler> m_managementHandler;
    bool m_hasManagementRow = false;
};

/// A thread with values and callbacks of its own.
class Publisher
{
public:
    Publisher(int number, unsigned int seed) : m_tree("8." + std::to_string(number)), m_dice(seed) {}

    ~Publisher()
    {
        snmp().deregisterValueChangedCallback(m_valueCallback.get());
        snmp().deregisterStateInfoCallback(m_stateCallback.get());
        snmp().unsetOidTree(below(m_tree));
    }

    void step()
    {
        const Oid oid = below(m_tree + '.' + std::to_string(1 + m_dice.number(10)));
        switch (m_dice.number(12)) {
        case 0:
            return snmp().unsetOid(oid);
        case 1:
            return m_dice.oneOf(20) ? snmp().unsetOidTree(below(m_tree)) : snmp().unsetOid(oid);
        case 2:
            return changeValueCallback(oid);
        case 3:
            return changeStateCallback();
        case 4:
            return snmp().sendValue(oid, std::string(static_cast<std::size_t>(m_dice.number(20000)), 'v'),
                                    m_dice.number(2));
        default:
            return snmp().sendValue(oid, m_dice.number(largestNumber), m_dice.number(2));
        }
    }

private:
    static vigil::VigilSnmpInterface& snmp() { return vigil::VigilSnmpInterface::instance(); }

    void changeValueCallback(const Oid& oid)
    {
        snmp().deregisterValueChangedCallback(m_valueCallback.get());
        m_valueCallback = std::make_unique<CountingCallback>();
        snmp().registerValueChangedCallback(oid, m_valueCallback.get());
    }

    void changeStateCallback()
    {
        snmp().deregisterStateInfoCallback(m_stateCallback.get());
        m_stateCallback = std::make_unique<CountingStateCallback>();
        snmp().registerStateInfoCallback(m_stateCallback.get());
    }

    const std::string m_tree;
    Dice m_dice;
    std::unique_ptr<CountingCallback> m_valueCallback;
    std::unique_ptr<CountingStateCallback> m_stateCallback;
};

// --- The manager

class Manager
{
public:
    Manager(FakeService& service, unsigned int seed) : m_service(service), m_dice(seed) {}

    void step()
    {
        const std::string owner = keyOfOwner(m_dice.number(owners));
        switch (m_dice.number(10)) {
        case 0:
            return setNumber(cell(5, 1 + m_dice.number(4), {"stress", owner}), 2);
        case 1:
            return setText(cell(5, 5, {"stress", owner}), std::string());
        case 2:
            return setNumber(cell(5, 1 + m_dice.number(4), {"stress", "idle"}), 2);
        case 3:
            return setNumber("8." + std::to_string(m_dice.number(publishers)) + ".1", 5);
        case 4:
            return m_dice.oneOf(3) ? m_service.stopReading() : m_service.resumeReading();
        default:
            return setText(
                cell(2, 3 + m_dice.number(2), {"stress", owner, m_dice.oneOf(3) ? "further" : "scalar"}),
                textOfRange(m_dice.number(largestNumber)));
        }
    }

    void rest() { m_service.resumeReading(); }

private:
    void setNumber(const std::string& oid, int value)
    {
        m_service.send(base::SnmpIntType, support::encodedInt(oid, value), base::Validation);
        m_service.send(base::SnmpIntType, support::encodedInt(oid, value), base::PlainValue);
    }

    void setText(const std::string& oid, const std::string& text)
    {
        m_service.send(base::SnmpStringType, support::encodedString(oid, text), base::Validation);
        m_service.send(base::SnmpStringType, support::encodedString(oid, text), base::PlainValue);
    }

    FakeService& m_service;
    Dice m_dice;
};

// --- One life of the library, beside a service of its own

/// Runs action for each element at the same time.
template <typename Elements, typename Action>
void inThreads(Elements& elements, Action action)
{
    std::vector<std::thread> threads;
    for (auto& element : elements)
        threads.emplace_back([&element, &action] { action(*element); });
    for (std::thread& thread : threads)
        thread.join();
}

class Life
{
public:
    explicit Life(unsigned int seed) : m_seed(seed)
    {
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(m_service.port()));
        if (seed % 2 == 0) // else the library may stop and start while the others work
            m_idle = vigil::createHealthCheck("stress", "idle");
        for (int number = 0; number < owners; ++number)
            m_owners.push_back(
                std::make_unique<Owner>(number, seed * 100 + static_cast<unsigned int>(number)));
    }

    /// The application works until the service has had this many connections.
    void work(int connections)
    {
        UpdatingManagementHandler handler(m_idle);
        if (m_idle)
            m_idle->registerManagementHandler(&handler);
        std::thread publishing([this] { publish(); });
        std::thread owning([this] {
            inThreads(m_owners, [this](Owner& owner) {
                while (m_isBusy) {
                    owner.step();
                    rest();
                }
            });
        });
        manage(connections);
        m_isBusy = false;
        owning.join();
        publishing.join();
        if (m_idle)
            m_idle->unregisterManagementHandler();
    }

    /// The service has the last words of all owners, and nothing else.
    void expectTrueState()
    {
        Cells expected;
        std::mutex mutex;
        inThreads(m_owners, [&](Owner& owner) {
            const Cells cells = owner.settle();
            const std::lock_guard<std::mutex> lock(mutex);
            expected.insert(cells.begin(), cells.end());
        });
        vigil::VigilSnmpInterface::instance().sendValue(below(m_mark), 1, 0);
        // Decoding each of the many frames would take too long under a sanitizer.
        const QByteArray mark = support::encodedInt(m_mark, 1);
        ASSERT_TRUE(m_service.waitForFrame([&](const auto& frame) { return frame.payload == mark; }));
        EXPECT_EQ(shownCells(), expected);
    }

    void end()
    {
        vigil::VigilSnmpInterface::instance().unsetOid(below(m_mark));
        inThreads(m_owners, [](Owner& owner) { owner.destroy(); });
        if (m_idle)
            m_idle->destroy();
        ASSERT_TRUE(m_service.waitForDisconnections(m_service.connections()));
        EXPECT_THAT(shownCells(), IsEmpty());
    }

private:
    void publish()
    {
        std::vector<std::unique_ptr<Publisher>> all;
        for (int number = 0; number < publishers; ++number)
            all.push_back(
                std::make_unique<Publisher>(number, m_seed * 100 + 50 + static_cast<unsigned int>(number)));
        inThreads(all, [this](Publisher& publisher) {
            while (m_isBusy) {
                publisher.step();
                rest();
            }
        });
    }

    void manage(int connections)
    {
        Manager manager(m_service, m_seed * 100 + 99);
        for (int connection = 1; connection <= connections; ++connection) {
            m_service.waitForConnections(connection);
            for (int step = 0; step < stepsPerConnection; ++step) {
                manager.step();
                ::rest();
            }
            manager.rest();
            if (connection < connections)
                m_service.closeConnection();
        }
    }

    Cells shownCells() const
    {
        support::ShownCells shown(m_service.frames());
        shown.remove("99");
        for (const int column : {3, 4})
            shown.remove(cell(1, column, {"stress", "idle"}));
        for (int column = 1; column <= 5; ++column)
            shown.remove(cell(5, column, {"stress", "idle"}));
        return shown.cells();
    }

    static constexpr int stepsPerConnection = 400;

    const std::string m_mark = "99.99"; // the last identifier, so all others are sent before it
    const unsigned int m_seed;
    FakeService m_service;
    HealthCheck* m_idle = nullptr;
    std::vector<std::unique_ptr<Owner>> m_owners;
    std::atomic<bool> m_isBusy{true};
};

void live(unsigned int seed, int connections)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    Life life(seed);
    life.work(connections);
    life.expectTrueState();
    life.end();
}

class Stress : public testing::Test
{
protected:
    // The debug lines are made, but would hide the result.
    Stress()
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    }
    ~Stress() override { qInstallMessageHandler(nullptr); }

    support::LibraryLog m_log;
};

TEST_F(Stress, LeavesTheServiceWithWhatTheApplicationSaid)
{
    using Clock = std::chrono::steady_clock;
    unsigned int seed = 0;
    for (; seed < 4; ++seed)
        live(seed, seed == 1 ? 2 : 1);
    const auto end = Clock::now() + std::chrono::minutes(support::isFullLoad() ? 10 : 0);
    for (; Clock::now() < end && !HasFailure(); ++seed)
        live(seed, 1 + static_cast<int>(seed % 3));
}

} // namespace
