// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The places of the virtual functions in the tables of the exported interfaces, found by calling them: an
// object whose table is made by hand tells which place a call goes to. The numbers are those of the compilers
// that share one object model, in which a virtual destructor has two places.

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

struct Place
{
    int number;
};

/// Stands at one place of every table. It does not return, so that it need not know what is to be returned.
template <int number>
void reportPlace()
{
    throw Place{number};
}

/// Whatever is before the first place: the offset to the whole object, and the type.
constexpr std::size_t header = 2;

using Table = std::array<std::uintptr_t, header + 20>;

template <typename Interface, std::size_t... numbers>
Table makeTable(std::index_sequence<numbers...>)
{
    return {0, reinterpret_cast<std::uintptr_t>(&typeid(Interface)),
            reinterpret_cast<std::uintptr_t>(&reportPlace<static_cast<int>(numbers)>)...};
}

/// Hides from the compiler what stands at an address.
template <typename Interface>
Interface& objectAt(void* address)
{
    void* volatile hidden = address;
    return *static_cast<Interface*>(hidden);
}

/// An object of the interface that has nothing but a table.
template <typename Interface>
class Fake
{
public:
    template <typename Call>
    int placeOf(Call call)
    {
        try {
            call(object());
        } catch (const Place& place) {
            return place.number;
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
    EXPECT_EQ(fake.placeOf([](auto& check) { check.createSimpleMetric(text); }), 0);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.createScalarMetric(text); }), 1);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.getFirstKey(); }), 2);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.getSecondKey(); }), 3);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.setDescription(text); }), 4);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.getDescription(); }), 5);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.registerManagementHandler(nullptr); }), 6);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.unregisterManagementHandler(); }), 7);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.update(); }), 8);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.getStatus(); }), 9);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.getSummary(); }), 10);
    EXPECT_EQ(fake.placeOf([&](auto& check) { check.getResults(results); }), 11);
    EXPECT_EQ(fake.placeOf([](auto& check) { check.destroy(); }), 12);
}

TEST(SlotOrder, Metric)
{
    Fake<vigil::Metric> fake;
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getName(); }), 0);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getUnit(); }), 1);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getWarningRange(); }), 2);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getCriticalRange(); }), 3);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.remove(); }), 4);
}

TEST(SlotOrder, ScalarMetric)
{
    Fake<vigil::ScalarMetric> fake;
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getName(); }), 0);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.remove(); }), 4);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setValue(1); }), 5);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getValue(); }), 6);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setUnit(text); }), 7);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setWarningRange(range); }), 8);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setCriticalRange(range); }), 9);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setPerformanceDataEnabled(true); }), 10);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setRangeChangeHandler(nullptr); }), 11);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.clearRangeChangeHandler(); }), 12);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getHealthCheck(); }), 13);
}

TEST(SlotOrder, SimpleMetric)
{
    Fake<vigil::SimpleMetric> fake;
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getName(); }), 0);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.remove(); }), 4);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setStatus(vigil::HealthStatus::Ok); }), 5);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getStatus(); }), 6);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setInfo(text); }), 7);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setTemplate(text); }), 8);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.setPerformanceDataEnabled(true); }), 9);
    EXPECT_EQ(fake.placeOf([](auto& metric) { metric.getHealthCheck(); }), 10);
}

TEST(SlotOrder, RangeChangeHandler)
{
    Fake<RangeChangeHandler> fake;
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.acceptRangeChange(nullptr, RangeKind{}, range); }), 2);
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.rangeChanged(nullptr, RangeKind{}); }), 3);
}

TEST(SlotOrder, ManagementHandler)
{
    Fake<ManagementHandler> fake;
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.managementFunction1(); }), 2);
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.managementFunction2(); }), 3);
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.managementFunction3(); }), 4);
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.managementFunction4(); }), 5);
    EXPECT_EQ(fake.placeOf([](auto& handler) { handler.managementFunction5(text); }), 6);
}

TEST(SlotOrder, Connector)
{
    Fake<Connector> fake;
    Fake<vigil::Metric> metric;
    const auto& results =
        objectAt<const std::vector<ResultEntry>>(&metric); // of a type that only the library knows
    EXPECT_EQ(fake.placeOf([&](auto& connector) { connector.updateResults(results); }), 0);
    EXPECT_EQ(fake.placeOf([](auto& connector) { connector.addMetric(text); }), 1);
    EXPECT_EQ(fake.placeOf([&](auto& connector) { connector.updateMetric(metric.object()); }), 2);
    EXPECT_EQ(fake.placeOf([](auto& connector) { connector.removeMetric(text); }), 3);
    EXPECT_EQ(fake.placeOf([](auto& connector) { connector.registerRemoteMetricObserver(nullptr); }), 4);
    EXPECT_EQ(fake.placeOf([](auto& connector) { connector.unregisterRemoteMetricObserver(nullptr); }), 5);
    EXPECT_EQ(fake.placeOf([](auto& connector) { connector.registerManagementHandler(nullptr); }), 6);
    EXPECT_EQ(fake.placeOf([](auto& connector) { connector.unregisterManagementHandler(); }), 7);
}

TEST(SlotOrder, VigilSnmpInterface)
{
    Fake<vigil::VigilSnmpInterface> fake;
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.init(text); }), 0);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.cleanup(); }), 1);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.sendValue(oid, "text", 0); }), 2);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.sendValue(oid, text, 0); }), 3);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.sendValue(oid, 1, 0); }), 4);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.unsetOid(oid); }), 5);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.unsetOidTree(oid); }), 6);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.registerValueChangedCallback(oid, nullptr); }), 7);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.deregisterValueChangedCallback(nullptr); }), 8);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.deregisterValueChanged(oid); }), 9);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.registerStateInfoCallback(nullptr); }), 10);
    EXPECT_EQ(fake.placeOf([](auto& facade) { facade.deregisterStateInfoCallback(nullptr); }), 11);
}

TEST(SlotOrder, ValueChangedCallback)
{
    Fake<vigil::ValueChangedCallback> fake;
    const int number = 1;
    EXPECT_EQ(fake.placeOf([](auto& callback) { callback.callbackValidateValue(oid, text); }), 2);
    EXPECT_EQ(fake.placeOf([&](auto& callback) { callback.callbackValidateValue(oid, number); }), 3);
    EXPECT_EQ(fake.placeOf([](auto& callback) { callback.callbackValueChanged(oid, text); }), 4);
    EXPECT_EQ(fake.placeOf([&](auto& callback) { callback.callbackValueChanged(oid, number); }), 5);
}

TEST(SlotOrder, StateInfoCallback)
{
    Fake<vigil::StateInfoCallback> fake;
    EXPECT_EQ(fake.placeOf([](auto& callback) { callback.callbackStateInfo(0); }), 2);
}
