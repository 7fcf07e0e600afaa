// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/CallbackStore.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <vigil/StateInfoCallback.h>
#include <vigil/ValueChangedCallback.h>

#include "base/Logging.h"
#include "support/LibraryLog.h"
#include "support/Oids.h"

using support::LibraryLog;
using support::oid;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

using Calls = std::vector<std::string>;

class RecordingCallback : public vigil::ValueChangedCallback
{
public:
    RecordingCallback(std::string name, Calls& calls) : m_name(std::move(name)), m_calls(calls) {}

    void callbackValueChanged(const Oid& cell, std::string value) override
    {
        m_calls.push_back(m_name + ' ' + cell.toStdString() + " \"" + value + '"');
    }
    void callbackValueChanged(const Oid& cell, int value) override
    {
        m_calls.push_back(m_name + ' ' + cell.toStdString() + ' ' + std::to_string(value));
    }

private:
    std::string m_name;
    Calls& m_calls;
};

class ThrowingCallback : public vigil::ValueChangedCallback, public vigil::StateInfoCallback
{
public:
    void callbackValueChanged(const Oid&, std::string) override { throw std::runtime_error("out of luck"); }
    void callbackValueChanged(const Oid&, int) override { throw 5; }
    void callbackStateInfo(int) override { throw std::runtime_error("out of order"); }
};

class RecordingStateCallback : public vigil::StateInfoCallback
{
public:
    explicit RecordingStateCallback(std::vector<int>& states) : m_states(states) {}
    void callbackStateInfo(int state) override { m_states.push_back(state); }

private:
    std::vector<int>& m_states;
};

class CallbackStoreTest : public testing::Test
{
protected:
    CallbackStore store;
    Calls calls;
    RecordingCallback a{"a", calls};
    RecordingCallback b{"b", calls};
};

TEST_F(CallbackStoreTest, ACallbackHearsOfItsExactIdentifier)
{
    store.registerValueChangedCallback(oid("1.2"), &a);
    store.notifyAll(oid("1.2"), 7);
    store.notifyAll(oid("1.2"), std::string("text"));
    EXPECT_THAT(calls, ElementsAreArray({"a 1.2 7", "a 1.2 \"text\""}));
}

TEST_F(CallbackStoreTest, AncestorsAreToldBeforeTheirDescendants)
{
    store.registerValueChangedCallback(oid("1.2.3"), &a);
    store.registerValueChangedCallback(oid("1"), &b);
    store.notifyAll(oid("1.2.3"), 7);
    EXPECT_THAT(calls, ElementsAreArray({"b 1.2.3 7", "a 1.2.3 7"}));
}

TEST_F(CallbackStoreTest, NeitherDescendantsNorSiblingsAreTold)
{
    store.registerValueChangedCallback(oid("1.2.3.4"), &a);
    store.registerValueChangedCallback(oid("1.2.30"), &b);
    store.notifyAll(oid("1.2.3"), 7);
    EXPECT_THAT(calls, IsEmpty());
}

TEST_F(CallbackStoreTest, ASecondRegistrationForAnIdentifierReplacesTheFirst)
{
    store.registerValueChangedCallback(oid("1.2"), &a);
    store.registerValueChangedCallback(oid("1.2"), &b);
    store.notifyAll(oid("1.2"), 7);
    EXPECT_THAT(calls, ElementsAreArray({"b 1.2 7"}));
}

TEST_F(CallbackStoreTest, ANullCallbackIsIgnored)
{
    store.registerValueChangedCallback(oid("1.2"), &a);
    store.registerValueChangedCallback(oid("1.2"), nullptr);
    store.deregisterValueChangedCallback(nullptr);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2")), &a);
}

TEST_F(CallbackStoreTest, DeregisteringAnIdentifierLeavesAllOthers)
{
    store.registerValueChangedCallback(oid("1.2"), &a);
    store.registerValueChangedCallback(oid("1.2.3"), &a);
    store.deregisterValueChanged(oid("1.2"));
    store.deregisterValueChanged(oid("1.9"));
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2")), nullptr);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2.3")), &a);
}

TEST_F(CallbackStoreTest, DeregisteringACallbackRemovesItEverywhereAndNoOther)
{
    store.registerValueChangedCallback(oid("1.1"), &a);
    store.registerValueChangedCallback(oid("1.2"), &b);
    store.registerValueChangedCallback(oid("1.3"), &a);
    store.deregisterValueChangedCallback(&a);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.1")), nullptr);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2")), &b);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.3")), nullptr);
}

TEST_F(CallbackStoreTest, FindLooksForTheExactIdentifierOnly)
{
    store.registerValueChangedCallback(oid("1.2"), &a);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2")), &a);
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2.3")), nullptr);
    EXPECT_EQ(store.findValueChangedCallback(oid("1")), nullptr);
}

TEST_F(CallbackStoreTest, NotificationsSkipTheNullEntryLeftByFind)
{
    EXPECT_EQ(store.findValueChangedCallback(oid("1.2")), nullptr);
    store.registerValueChangedCallback(oid("1"), &a);
    store.notifyAll(oid("1.2"), 7);
    EXPECT_THAT(calls, ElementsAreArray({"a 1.2 7"}));
}

TEST_F(CallbackStoreTest, EveryStateCallbackIsToldOnceHoweverOftenItWasRegistered)
{
    std::vector<int> first;
    std::vector<int> second;
    RecordingStateCallback one(first);
    RecordingStateCallback two(second);
    store.registerStateInfoCallback(&one);
    store.registerStateInfoCallback(&one);
    store.registerStateInfoCallback(&two);
    store.registerStateInfoCallback(nullptr);
    store.notifyStateInfo(1);
    EXPECT_THAT(first, ElementsAre(1));
    EXPECT_THAT(second, ElementsAre(1));
}

TEST_F(CallbackStoreTest, StateCallbacksAreToldInTheOrderOfTheirAddresses)
{
    std::vector<int> order;
    struct Numbered : vigil::StateInfoCallback
    {
        void callbackStateInfo(int) override { order->push_back(number); }
        std::vector<int>* order = nullptr;
        int number = 0;
    };
    Numbered callbacks[5];
    for (const int number : {3, 0, 4, 2, 1}) {
        callbacks[number].order = &order;
        callbacks[number].number = number;
        store.registerStateInfoCallback(&callbacks[number]);
    }
    store.notifyStateInfo(0);
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(CallbackStoreTest, AThrowingCallbackIsLoggedAndTheNextOneCalled)
{
    const LibraryLog log;
    base::startLogging();
    ThrowingCallback throwing;
    store.registerValueChangedCallback(oid("1"), &throwing);
    store.registerValueChangedCallback(oid("1.2"), &a);
    store.notifyAll(oid("1.2"), 7);
    store.notifyAll(oid("1.2"), std::string("text"));
    EXPECT_THAT(calls, ElementsAreArray({"a 1.2 7", "a 1.2 \"text\""}));
    EXPECT_EQ(log.count("___ERROR___ callbackValueChanged threw: something that is no std::exception"), 1);
    EXPECT_EQ(log.count("___ERROR___ callbackValueChanged threw: out of luck"), 1);
    base::stopLogging();
}

TEST_F(CallbackStoreTest, AThrowingStateCallbackIsLoggedAndTheOthersCalled)
{
    const LibraryLog log;
    base::startLogging();
    std::vector<int> states;
    RecordingStateCallback before(states);
    ThrowingCallback throwing;
    RecordingStateCallback after(states);
    store.registerStateInfoCallback(&before);
    store.registerStateInfoCallback(&throwing);
    store.registerStateInfoCallback(&after);
    store.notifyStateInfo(1);
    EXPECT_THAT(states, ElementsAre(1, 1));
    EXPECT_EQ(log.count("___ERROR___ callbackStateInfo threw: out of order"), 1);
    base::stopLogging();
}

TEST_F(CallbackStoreTest, ADeregisteredStateCallbackIsNotTold)
{
    std::vector<int> states;
    RecordingStateCallback callback(states);
    store.registerStateInfoCallback(&callback);
    store.deregisterStateInfoCallback(nullptr);
    store.deregisterStateInfoCallback(&callback);
    store.notifyStateInfo(0);
    EXPECT_THAT(states, IsEmpty());
}

TEST_F(CallbackStoreTest, AValueCannotForgeLinesOfTheLog)
{
    const LibraryLog log;
    base::startLogging();
    store.registerValueChangedCallback(oid("1"), &a);
    store.notifyAll(oid("1"), std::string("x\n2026-01-01 00:00:00.000: forged\x1b[2J\r"));
    base::stopLogging();
    EXPECT_EQ(log.count("x\\n2026-01-01 00:00:00.000: forged\\u001b[2J\\r)"), 2);
    EXPECT_THAT(calls, ElementsAreArray({"a 1 \"x\n2026-01-01 00:00:00.000: forged\x1b[2J\r\""}))
        << "the callback gets the value as it is";
}

TEST_F(CallbackStoreTest, NotificationsAreLoggedWithTheCallbacksAddressInDecimals)
{
    const LibraryLog log;
    base::startLogging();
    store.registerValueChangedCallback(oid("1.2"), &a);
    store.notifyAll(oid("1.2.3"), -7);
    store.notifyAll(oid("1.2.3"), std::string("10:20"));
    store.notifyAll(oid("1.9"), 5);
    base::stopLogging();
    const std::string address =
        std::to_string(reinterpret_cast<std::uintptr_t>(static_cast<vigil::ValueChangedCallback*>(&a)));
    std::vector<std::string> lines = log.lines();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [](const std::string& line) { return line.find("value=") == line.npos; }),
                lines.end());
    EXPECT_THAT(lines, ElementsAre("notifyAll(oid=1.2.3, value=-7)",
                                   address + "->callbackValueChanged(1.2.3, value=-7)",
                                   "notifyAll(oid=1.2.3, value=10:20)",
                                   address + "->callbackValueChanged(1.2.3, value=10:20)",
                                   "notifyAll(oid=1.9, value=5)"));
}

TEST(ValueChangedCallback, TheBaseClassAcceptsEverythingAndIgnoresEveryChange)
{
    vigil::ValueChangedCallback callback;
    EXPECT_EQ(callback.callbackValidateValue(oid("1"), std::string("x")), 0u);
    EXPECT_EQ(callback.callbackValidateValue(oid("1"), 5), 0u);
    callback.callbackValueChanged(oid("1"), std::string("x"));
    callback.callbackValueChanged(oid("1"), 5);
}

} // namespace
