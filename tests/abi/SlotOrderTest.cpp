// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The slots of the virtual functions of the exported interfaces. Each function is called on an object with a
// table of probes, and the probe reports the slot. The numbers are those of GCC and clang, where a virtual
// destructor takes two slots.

#include <vigil/Connector.h>
#include <vigil/vigil.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

namespace {

static_assert(static_cast<int>(RangeKind::Warning) == 0, "binary interface");
static_assert(static_cast<int>(RangeKind::Critical) == 1, "binary interface");

struct Slot
{
    int number;
};

/// The probe in one slot of every table. It throws, so it needs no result of the right type.
template <int number>
void reportSlot()
{
    throw Slot{number};
}

/// The entries before slot 0: the offset to the whole object, and the type.
constexpr std::size_t header = 2;

using Table = std::array<std::uintptr_t, header + 20>;

template <typename Interface, std::size_t... numbers>
Table makeTable(std::index_sequence<numbers...>)
{
    return {0, reinterpret_cast<std::uintptr_t>(&typeid(Interface)),
            reinterpret_cast<std::uintptr_t>(&reportSlot<static_cast<int>(numbers)>)...};
}

/// Hides the true type of the object at address from the compiler.
template <typename Interface>
Interface& objectAt(void* address)
{
    void* volatile hidden = address;
    return *static_cast<Interface*>(hidden);
}

/// An object of the interface with nothing but a table.
template <typename Interface>
class Fake
{
public:
    template <typename Call>
    int slotOf(Call call)
    {
        try {
            call(object());
        } catch (const Slot& slot) {
            return slot.number;
        }
        return -1;
    }

    Interface& object() { return objectAt<Interface>(&m_pointer); }

private:
    const Table m_table = makeTable<Interface>(std::make_index_sequence<20>());
    const std::uintptr_t* m_pointer = m_table.data() + header;
};

const vigil::Oid oid;
const vigil::Range range;
const std::string text;

} // namespace

TEST(SlotOrder, HealthCheck)
{
    Fake<vigil::HealthCheck> fake;
    std::vector<vigil::Result> results;
    EXPECT_EQ(fake.slotOf([](auto& check) { check.createSimpleMetric(text); }), 0);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.createScalarMetric(text); }), 1);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.getFirstKey(); }), 2);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.getSecondKey(); }), 3);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.setDescription(text); }), 4);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.getDescription(); }), 5);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.registerManagementHandler(nullptr); }), 6);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.unregisterManagementHandler(); }), 7);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.update(); }), 8);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.getStatus(); }), 9);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.getSummary(); }), 10);
    EXPECT_EQ(fake.slotOf([&](auto& check) { check.getResults(results); }), 11);
    EXPECT_EQ(fake.slotOf([](auto& check) { check.destroy(); }), 12);
}

TEST(SlotOrder, Metric)
{
    Fake<vigil::Metric> fake;
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getName(); }), 0);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getUnit(); }), 1);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getWarningRange(); }), 2);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getCriticalRange(); }), 3);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.remove(); }), 4);
}

TEST(SlotOrder, ScalarMetric)
{
    Fake<vigil::ScalarMetric> fake;
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getName(); }), 0);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.remove(); }), 4);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setValue(1); }), 5);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getValue(); }), 6);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setUnit(text); }), 7);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setWarningRange(range); }), 8);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setCriticalRange(range); }), 9);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setPerformanceDataEnabled(true); }), 10);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setRangeChangeHandler(nullptr); }), 11);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.clearRangeChangeHandler(); }), 12);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getHealthCheck(); }), 13);
}

TEST(SlotOrder, SimpleMetric)
{
    Fake<vigil::SimpleMetric> fake;
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getName(); }), 0);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.remove(); }), 4);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setStatus(vigil::HealthStatus::Ok); }), 5);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getStatus(); }), 6);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setInfo(text); }), 7);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setTemplate(text); }), 8);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.setPerformanceDataEnabled(true); }), 9);
    EXPECT_EQ(fake.slotOf([](auto& metric) { metric.getHealthCheck(); }), 10);
}

TEST(SlotOrder, RangeChangeHandler)
{
    Fake<RangeChangeHandler> fake;
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.acceptRangeChange(nullptr, RangeKind{}, range); }), 2);
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.rangeChanged(nullptr, RangeKind{}); }), 3);
}

TEST(SlotOrder, ManagementHandler)
{
    Fake<ManagementHandler> fake;
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.managementFunction1(); }), 2);
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.managementFunction2(); }), 3);
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.managementFunction3(); }), 4);
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.managementFunction4(); }), 5);
    EXPECT_EQ(fake.slotOf([](auto& handler) { handler.managementFunction5(text); }), 6);
}

TEST(SlotOrder, Connector)
{
    Fake<Connector> fake;
    Fake<vigil::Metric> metric;
    const auto& results =
        objectAt<const std::vector<ResultEntry>>(&metric); // an incomplete type for applications
    EXPECT_EQ(fake.slotOf([&](auto& connector) { connector.updateResults(results); }), 0);
    EXPECT_EQ(fake.slotOf([](auto& connector) { connector.addMetric(text); }), 1);
    EXPECT_EQ(fake.slotOf([&](auto& connector) { connector.updateMetric(metric.object()); }), 2);
    EXPECT_EQ(fake.slotOf([](auto& connector) { connector.removeMetric(text); }), 3);
    EXPECT_EQ(fake.slotOf([](auto& connector) { connector.registerRemoteMetricObserver(nullptr); }), 4);
    EXPECT_EQ(fake.slotOf([](auto& connector) { connector.unregisterRemoteMetricObserver(nullptr); }), 5);
    EXPECT_EQ(fake.slotOf([](auto& connector) { connector.registerManagementHandler(nullptr); }), 6);
    EXPECT_EQ(fake.slotOf([](auto& connector) { connector.unregisterManagementHandler(); }), 7);
}

TEST(SlotOrder, VigilSnmpInterface)
{
    Fake<vigil::VigilSnmpInterface> fake;
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.init(text); }), 0);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.cleanup(); }), 1);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.sendValue(oid, "text", 0); }), 2);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.sendValue(oid, text, 0); }), 3);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.sendValue(oid, 1, 0); }), 4);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.unsetOid(oid); }), 5);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.unsetOidTree(oid); }), 6);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.registerValueChangedCallback(oid, nullptr); }), 7);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.deregisterValueChangedCallback(nullptr); }), 8);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.deregisterValueChanged(oid); }), 9);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.registerStateInfoCallback(nullptr); }), 10);
    EXPECT_EQ(fake.slotOf([](auto& facade) { facade.deregisterStateInfoCallback(nullptr); }), 11);
}

TEST(SlotOrder, ValueChangedCallback)
{
    Fake<vigil::ValueChangedCallback> fake;
    const int number = 1;
    EXPECT_EQ(fake.slotOf([](auto& callback) { callback.callbackValidateValue(oid, text); }), 2);
    EXPECT_EQ(fake.slotOf([&](auto& callback) { callback.callbackValidateValue(oid, number); }), 3);
    EXPECT_EQ(fake.slotOf([](auto& callback) { callback.callbackValueChanged(oid, text); }), 4);
    EXPECT_EQ(fake.slotOf([&](auto& callback) { callback.callbackValueChanged(oid, number); }), 5);
}

TEST(SlotOrder, StateInfoCallback)
{
    Fake<vigil::StateInfoCallback> fake;
    EXPECT_EQ(fake.slotOf([](auto& callback) { callback.callbackStateInfo(0); }), 2);
}
