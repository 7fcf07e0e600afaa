// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/vigil.h>

#include <vector>

#include "testing/TestedApplication.h"

using testing::ElementsAre;
using vigil::Range;
using vigil::test::HasCheck;
using vigil::test::HasCriticalRange;
using vigil::test::HasMetric;
using vigil::test::HasNumber;
using vigil::test::HasText;
using vigil::test::HasWarningRange;
using vigil::test::SetResult;

namespace {

constexpr const char* ownNumber = "1.3.6.1.4.1.32473.1.1.0";
constexpr const char* ownText = "1.3.6.1.4.1.32473.1.2.0";

class EvenNumbers : public vigil::ValueChangedCallback
{
public:
    using ValueChangedCallback::callbackValidateValue;
    using ValueChangedCallback::callbackValueChanged;

    unsigned int callbackValidateValue(const vigil::Oid&, const int& value) override
    {
        return value % 2 == 0 ? 0 : 10;
    }
    void callbackValueChanged(const vigil::Oid&, int value) override { numbers.push_back(value); }
    void callbackValueChanged(const vigil::Oid&, std::string value) override { texts.push_back(value); }

    std::vector<int> numbers;
    std::vector<std::string> texts;
};

} // namespace

class FakeServiceSets : public TestedApplication
{
protected:
    SetResult setWarning(const std::string& range)
    {
        return service.setWarningRange("shop", "orders", "pending", range);
    }
};

TEST_F(FakeServiceSets, ARangeIsAcceptedOrRefusedByTheApplication)
{
    std::vector<std::string> changes;
    pending.setRangeHandler(
        [](vigil::RangeKind, const Range& range) { return range.getUpperBound() < 100; },
        [&](vigil::RangeKind, const Range& range) { changes.push_back(range.toString()); });
    ASSERT_TRUE(service.settle());
    EXPECT_EQ(setWarning("~:60"), SetResult::Accepted);
    EXPECT_THAT(changes, ElementsAre("~:60")) << "the application has handled it";
    EXPECT_EQ(service.setCriticalRange("shop", "orders", "pending", "~:90"), SetResult::Accepted);
    EXPECT_EQ(setWarning("~:600"), SetResult::Refused);
    EXPECT_EQ(setWarning("no range"), SetResult::Refused);
    EXPECT_THAT(
        service.published(),
        HasCheck("shop", "orders", HasMetric("pending", HasWarningRange("~:60"), HasCriticalRange("~:90"))));
}

TEST_F(FakeServiceSets, WithoutAHandlerARangeIsRefused)
{
    ASSERT_TRUE(service.settle());
    EXPECT_FALSE(service.published().check("shop", "orders")->metric("pending")->acceptsRanges);
    EXPECT_EQ(setWarning("~:60"), SetResult::Refused);
}

TEST_F(FakeServiceSets, FunctionsAreTriggered)
{
    std::vector<int> calls;
    for (int number = 1; number <= 5; ++number)
        check.setFunction(number, [&calls, number] { calls.push_back(number); });
    EXPECT_TRUE(service.published().check("shop", "orders")->hasFunctions);
    for (int number = 1; number <= 5; ++number)
        EXPECT_EQ(service.triggerFunction("shop", "orders", number), SetResult::Accepted) << number;
    EXPECT_THAT(calls, ElementsAre(1, 2, 3, 4, 5));
    EXPECT_THROW(service.triggerFunction("shop", "orders", 6), std::out_of_range);
}

TEST_F(FakeServiceSets, OwnCellsOfTheApplicationAreSet)
{
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    EvenNumbers callback;
    for (const char* identifier : {ownNumber, ownText})
        facade.registerValueChangedCallback(vigil::Oid::fromStdString(identifier), &callback);
    facade.sendValue(vigil::Oid::fromStdString(ownNumber), 0, 0);
    facade.sendValue(vigil::Oid::fromStdString(ownText), "before", 0);
    ASSERT_TRUE(service.settle());
    EXPECT_EQ(service.setNumber(ownNumber, 3), SetResult::Refused);
    EXPECT_EQ(service.setNumber(ownNumber, 4), SetResult::Accepted);
    EXPECT_EQ(service.setText(ownText, "after"), SetResult::Accepted);
    facade.deregisterValueChangedCallback(&callback);
    EXPECT_THAT(callback.numbers, ElementsAre(4));
    EXPECT_THAT(callback.texts, ElementsAre("after"));
    EXPECT_THAT(service.published(), HasNumber(ownNumber, 4));
    EXPECT_THAT(service.published(), HasText(ownText, "after"));
}

TEST_F(FakeServiceSets, WithoutACellThereIsNothingToSet)
{
    EXPECT_EQ(service.setWarningRange("shop", "orders", "other", "~:60"), SetResult::NoSuchCell);
    EXPECT_EQ(service.triggerFunction("shop", "orders", 1), SetResult::NoSuchCell);
    EXPECT_EQ(service.setNumber(ownNumber, 1), SetResult::NoSuchCell);
}

TEST_F(FakeServiceSets, AStalledServiceGetsNoReply)
{
    publish(1);
    ASSERT_TRUE(service.settle());
    service.setTimeout(std::chrono::milliseconds(50));
    service.stall();
    EXPECT_EQ(setWarning("~:60"), SetResult::NoReply);
}
