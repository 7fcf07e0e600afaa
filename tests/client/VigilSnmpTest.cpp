// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/VigilSnmp.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QSemaphore>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <vigil/vigil.h>

#include "base/Logging.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpResponse.h"
#include "client/CallbackStoreLock.h"
#include "support/CheckPointer.h"
#include "support/Deadline.h"
#include "support/EnvironmentVariable.h"
#include "support/LibraryTest.h"
#include "support/MatchesPattern.h"
#include "support/Oids.h"
#include "support/RecordBytes.h"
#include "support/ScriptedCallbacks.h"

using support::below;
using support::encodedInt;
using support::encodedString;
using support::int32Bytes;
using support::MatchesPattern;
using support::propertyBytes;
using support::Recorder;
using support::ScriptedCallback;
using support::ScriptedStateCallback;
using support::set;
using support::unset;
using support::withTrap;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

std::string addressText(const void* pointer)
{
    char text[19];
    std::snprintf(text, sizeof(text), "0x%016llx",
                  static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}

std::string valueCallbackAddress(vigil::ValueChangedCallback& callback)
{
    return addressText(&callback);
}

std::string stateCallbackAddress(vigil::StateInfoCallback& callback)
{
    return addressText(&callback);
}

class VigilSnmpTest : public support::LibraryTest
{
protected:
    Recorder recorder;
};

// --- Start and stop

TEST_F(VigilSnmpTest, AValueSentBeforeInitIsDroppedAndNotReplayedLater)
{
    facade.sendValue(below("1"), 5, 0);
    facade.sendValue(below("2"), "text", 0);
    facade.unsetOid(below("3"));
    facade.unsetOidTree(below("4"));
    start();
    EXPECT_THAT(publications(), IsEmpty());
}

TEST_F(VigilSnmpTest, CallsAfterCleanupDoNothing)
{
    start();
    facade.cleanup();
    ScriptedCallback callback(recorder);
    ScriptedStateCallback stateCallback(recorder);
    facade.sendValue(below("1"), 5, 0);
    facade.unsetOidTree(below("1"));
    facade.registerValueChangedCallback(below("1"), &callback);
    facade.registerStateInfoCallback(&stateCallback);
    facade.deregisterValueChangedCallback(&callback);
    facade.deregisterValueChanged(below("1"));
    facade.deregisterStateInfoCallback(&stateCallback);
    start();
    EXPECT_THAT(publications(), IsEmpty());
}

TEST_F(VigilSnmpTest, ARegistrationBeforeInitIsNotRememberedNorLogged)
{
    ScriptedCallback callback(recorder);
    facade.registerValueChangedCallback(below("1"), &callback);
    start();
    EXPECT_EQ(validate("1", 5), "answer 1 to 1 = 5");
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_FALSE(log.contains("Register value changed callback"));
}

TEST_F(VigilSnmpTest, ASecondInitDoesNothing)
{
    start();
    facade.init("again");
    settle();
    EXPECT_EQ(service.connections(), 1);
    EXPECT_EQ(log.count("[VigilSnmp::init] Initializing"), 1);
}

TEST_F(VigilSnmpTest, ASecondCleanupDoesNothing)
{
    start();
    facade.cleanup();
    const std::size_t lines = log.lines().size();
    facade.cleanup();
    EXPECT_EQ(log.lines().size(), lines);
    EXPECT_EQ(log.count("[VigilSnmp::cleanup] Cleanup."), 1);
}

TEST_F(VigilSnmpTest, InitAfterCleanupStartsWithAnEmptyCache)
{
    ScriptedCallback callback(recorder);
    start();
    facade.sendValue(below("1"), 5, 0);
    facade.registerValueChangedCallback(below("1"), &callback);
    facade.cleanup();
    ASSERT_TRUE(service.waitForDisconnections(1));
    EXPECT_THAT(publicationsSoFar(), ElementsAreArray({set("1", 5)}));

    start();
    EXPECT_EQ(service.connections(), 2);
    EXPECT_THAT(publications(), IsEmpty());
    EXPECT_EQ(validate("1", 5), "answer 1 to 1 = 5");
    facade.sendValue(below("2"), 6, 0);
    EXPECT_THAT(publications(), ElementsAreArray({set("2", 6)}));
}

TEST_F(VigilSnmpTest, TheProcessHasTheLibrarysApplicationObjectFromInitToCleanup)
{
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    start();
    ASSERT_NE(QCoreApplication::instance(), nullptr);
    EXPECT_TRUE(QCoreApplication::arguments().isEmpty());
    const QThread* runner = QCoreApplication::instance()->thread();
    const std::string affinity = base::toHexString(runner).toStdString();
    EXPECT_EQ(log.count(" QThread affinity = " + affinity + "."), 1);
    EXPECT_FALSE(log.contains("[Client::init] Initializing in thread " + affinity));
    facade.cleanup();
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    EXPECT_EQ(log.count(" QThread affinity = " + affinity + "."), 2);
}

TEST_F(VigilSnmpTest, CleanupSendsPendingValuesFirst)
{
    start();
    constexpr int count = 1000;
    for (int i = 0; i < count; ++i)
        facade.sendValue(below("1"), i, 0);
    facade.cleanup();
    ASSERT_TRUE(service.waitForDisconnections(1));
    const std::vector<std::string> lines = publicationsSoFar();
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(lines.back(), set("1", count - 1));
}

TEST_F(VigilSnmpTest, TheSharedTablesAndTheStoreLastFromInitToCleanup)
{
    ::vigil::VigilSnmp& implementation = vigil::VigilSnmp::instance();
    EXPECT_EQ(&implementation, &facade);
    EXPECT_TRUE(implementation.tableManager().expired());
    EXPECT_FALSE(CallbackStoreLock());
    start();
    EXPECT_FALSE(implementation.tableManager().expired());
    EXPECT_TRUE(CallbackStoreLock());
    facade.cleanup();
    EXPECT_TRUE(implementation.tableManager().expired());
    EXPECT_FALSE(CallbackStoreLock());
}

// A thread held up for longer than the end of a process may wait used to put the library out of use for good.
TEST_F(VigilSnmpTest, CleanupWaitsUntilTheStoreIsReleased)
{
    service.refuseConnections(); // or the client would need the store to tell of its loss
    facade.init("test");
    std::atomic<bool> isHeld{false};
    std::atomic<bool> isReleased{false};
    std::thread slow([&] {
        const CallbackStoreLock store;
        isHeld = true;
        EXPECT_TRUE(log.waitFor("Event loop stopped"));
        const QDeadlineTimer longerThanAnExitWaits(500);
        while (!longerThanAnExitWaits.hasExpired())
            std::this_thread::yield();
        isReleased = true;
    });
    while (!isHeld)
        std::this_thread::yield();
    facade.cleanup();
    EXPECT_TRUE(isReleased);
    slow.join();

    service.acceptConnections();
    start();
    facade.sendValue(below("1"), 5, 0);
    EXPECT_THAT(publications(), ElementsAreArray({set("1", 5)}));
}

TEST_F(VigilSnmpTest, StartAndStopAreLogged)
{
    facade.init(std::string("a \xC3\xA4 name\0and more", 17)); // logged as a C string
    settle();
    facade.cleanup();
    const std::string hex = "0x[0-9a-f]{16}";
    std::vector<std::string> lines = log.lines();
    const auto isSocketsOrFiles = [](const std::string& line) {
        return line.rfind("CCS::LOG: ", 0) == 0 || line.find("local time") != std::string::npos ||
               line.rfind("Process ", 0) == 0 || line == "Application termination" || line.empty();
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isSocketsOrFiles), lines.end());
    const std::string eventLoop = " in thread Id " + hex + "\\. QThread affinity = " + hex + "\\.";
    EXPECT_THAT(lines,
                ElementsAre("[VigilSnmp::init] Initializing a \xC3\xA4 name.",
                            MatchesPattern("\\[Client::init\\] Initializing in thread " + hex + "\\."),
                            "[Client::onConnected] Connected to snmp service.",
                            MatchesPattern("ClientThread::run\\(\\): Event loop started" + eventLoop),
                            "[VigilSnmp::cleanup] Cleanup.",
                            "[Client::onDisconnected] Disconnected from snmp service.",
                            MatchesPattern("ClientThread::run\\(\\): Event loop stopped" + eventLoop)));
}

TEST_F(VigilSnmpTest, TheSocketsInformationReachesTheLogItsDebugLinesDoNot)
{
    start();
    EXPECT_TRUE(log.contains("CCS::LOG: connectToHost(127.0.0.1  - port: " + std::to_string(service.port())));
    EXPECT_FALSE(log.contains("CCS::DEBUG: "));
}

TEST_F(VigilSnmpTest, TheSocketsDebugLinesReachTheLogOnDemand)
{
    const support::EnvironmentVariable debug("VIGIL_LOG_DEBUG", "1");
    start();
    EXPECT_TRUE(log.waitFor("CCS::DEBUG: CCS:SEND MSG # 1 --->"));
    facade.cleanup();
}

TEST_F(VigilSnmpTest, ABadServicePortIsReportedAndNothingConnected)
{
    qputenv("VIGIL_SERVICE_PORT", "65536");
    facade.init("test");
    EXPECT_TRUE(log.waitFor("VIGIL_SERVICE_PORT is \"65536\""));
    facade.sendValue(below("1"), 5, 0);
    facade.cleanup();
    EXPECT_FALSE(log.contains("connectToHost"));
}

TEST_F(VigilSnmpTest, SwitchedOffItStartsNothingWhileChecksWork)
{
    qputenv("VIGIL_SERVICE_PORT", "off");
    const support::CheckPointer check(vigil::createHealthCheck("first", "second"));
    vigil::ScalarMetric* metric = check->createScalarMetric("metric");
    metric->setCriticalRange(vigil::Range::CreateThresholdAbove(10));
    metric->setValue(11);
    check->update();
    metric->remove();
    EXPECT_EQ(check->getStatus(), vigil::HealthStatus::Critical);
    EXPECT_EQ(QCoreApplication::instance(), nullptr) << "the library's thread runs";
    EXPECT_THAT(log.lines(), IsEmpty());
}

// --- Publishing

TEST_F(VigilSnmpTest, OnlyTheTrapArgument1AsksForATrap)
{
    start();
    for (const int useTraps : {1, 0, 2, -1}) {
        facade.sendValue(below("1"), "text", useTraps);
        facade.sendValue(below("2"), std::string("text"), useTraps);
        facade.sendValue(below("3"), 5, useTraps);
    }
    const std::string chars = set("1", "text");
    const std::string string = set("2", "text");
    const std::string number = set("3", 5);
    EXPECT_THAT(publications(), ElementsAre(withTrap(chars), withTrap(string), withTrap(number), chars,
                                            string, number, chars, string, number, chars, string, number));
}

TEST_F(VigilSnmpTest, TextsTravelAsUtf8)
{
    start();
    facade.sendValue(below("1"), "\xC3\xA4\xE2\x82\xAC", 0);
    EXPECT_THAT(publications(), ElementsAreArray({set("1", "\xC3\xA4\xE2\x82\xAC")}));
}

TEST_F(VigilSnmpTest, TextAfterANulIsNotSent)
{
    start();
    facade.sendValue(below("1"), std::string("ab\0cd", 5), 0);
    EXPECT_THAT(publications(), ElementsAreArray({set("1", "ab")}));
}

TEST_F(VigilSnmpTest, AnUnsetIsANullValueAndLogsNothing)
{
    start();
    const std::size_t lines = log.lines().size();
    facade.unsetOid(below("1.2"));
    EXPECT_THAT(publications(), ElementsAreArray({unset("1.2")}));
    EXPECT_EQ(log.lines().size(), lines);
}

TEST_F(VigilSnmpTest, UnsettingATreeIsLoggedOnlyWhileThereIsAClient)
{
    facade.unsetOidTree(below("1"));
    start();
    facade.sendValue(below("1.2"), 5, 0);
    facade.unsetOidTree(below("1"));
    EXPECT_THAT(publications(), ElementsAreArray({set("1.2", 5), unset("1")}));
    facade.cleanup();
    facade.unsetOidTree(below("1"));
    EXPECT_EQ(log.count("Unset tree "), 1);
    EXPECT_EQ(log.count("Unset tree 1.3.6.1.4.1.32473.1."), 1);
}

TEST_F(VigilSnmpTest, SeveralThreadsMayPublishAtOnceAndNothingIsLost)
{
    start();
    constexpr int threadCount = 4;
    constexpr int valueCount = 250;
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < valueCount; ++i)
                facade.sendValue(below(std::to_string(t)), i, 0);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::vector<int> next(threadCount, 0);
    for (const std::string& line : publications()) {
        const auto t = static_cast<std::size_t>(line[0] - '0');
        EXPECT_EQ(line, set(std::to_string(t), next[t]++));
    }
    EXPECT_THAT(next, testing::Each(valueCount));
}

/// Mainly for the thread sanitizer.
TEST_F(VigilSnmpTest, ThreadsMayPublishAndRegisterDuringCleanup)
{
    start();
    std::atomic<bool> isStopped{false};
    std::thread publisher([&] {
        while (!isStopped)
            facade.sendValue(below("1"), 1, 0);
    });
    std::thread registrar([&] {
        ScriptedCallback callback(recorder);
        while (!isStopped) {
            facade.registerValueChangedCallback(below("1"), &callback);
            facade.deregisterValueChangedCallback(&callback);
        }
    });
    EXPECT_TRUE(service.waitForFrames(service.frameCount() + 1));
    facade.cleanup();
    isStopped = true;
    publisher.join();
    registrar.join();
    EXPECT_TRUE(service.waitForDisconnections(1));
}

// --- Callbacks

TEST_F(VigilSnmpTest, RegistrationsAreLoggedWithTheCallbacksAddress)
{
    start();
    ScriptedCallback callback(recorder);
    ScriptedStateCallback stateCallback(recorder);
    const std::size_t before = log.lines().size();
    facade.registerValueChangedCallback(below("1"), &callback);
    facade.deregisterValueChangedCallback(&callback);
    facade.deregisterValueChanged(below("1"));
    facade.registerStateInfoCallback(&stateCallback);
    facade.deregisterStateInfoCallback(&stateCallback);
    std::vector<std::string> lines = log.lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before - 1)); // "" after the last
    const std::string value = valueCallbackAddress(callback);
    const std::string state = stateCallbackAddress(stateCallback);
    EXPECT_THAT(lines, ElementsAre("Register value changed callback " + value + ".",
                                   "Deregister value changed callback " + value + ".",
                                   "Deregister value changed for OID 1.3.6.1.4.1.32473.1.",
                                   "Register state info callback " + state,
                                   "Deregister state info callback " + state, ""));
}

TEST_F(VigilSnmpTest, ACallbackUnderTwoIdentifiersLosesBothRegistrationsAtOnce)
{
    start();
    ScriptedCallback callback(recorder);
    facade.registerValueChangedCallback(below("1"), &callback);
    facade.registerValueChangedCallback(below("2"), &callback);
    EXPECT_EQ(validate("1", 5), "answer 0 to 1 = 5");
    EXPECT_EQ(validate("2", 5), "answer 0 to 2 = 5");
    facade.deregisterValueChangedCallback(&callback);
    EXPECT_EQ(validate("1", 5), "answer 1 to 1 = 5");
    EXPECT_EQ(validate("2", 5), "answer 1 to 2 = 5");
}

TEST_F(VigilSnmpTest, DeregisteringAnIdentifierLeavesTheOthersOfTheCallbackAlone)
{
    start();
    ScriptedCallback callback(recorder);
    facade.registerValueChangedCallback(below("1"), &callback);
    facade.registerValueChangedCallback(below("1.1"), &callback);
    facade.deregisterValueChanged(below("1"));
    EXPECT_EQ(validate("1", 5), "answer 1 to 1 = 5");
    EXPECT_EQ(validate("1.1", 5), "answer 0 to 1.1 = 5");
    facade.deregisterValueChangedCallback(&callback);
}

TEST_F(VigilSnmpTest, ACommittedSetReachesAncestorsFirstAndThenTheExactIdentifier)
{
    start();
    ScriptedCallback table(recorder, "table");
    ScriptedCallback exact(recorder, "cell");
    facade.registerValueChangedCallback(below("127.3.1.200.4.5.1.2.5"), &exact);
    facade.registerValueChangedCallback(below("127.3.1.200.4.5"), &table);
    commit("127.3.1.200.4.5.1.2.5", 2);
    commit("127.3.1.200.4.5.1.2.5", "text");
    const std::string oid = "1.3.6.1.4.1.32473.127.3.1.200.4.5.1.2.5";
    EXPECT_THAT(
        recorder.lines(),
        ElementsAreArray({"table changed " + oid + " = 2", "cell changed " + oid + " = 2",
                          "table changed " + oid + " = \"text\"", "cell changed " + oid + " = \"text\""}));
    EXPECT_TRUE(log.contains("notifyAll(oid=" + oid + ", value=text)"));
    facade.deregisterValueChangedCallback(&table);
    facade.deregisterValueChangedCallback(&exact);
}

TEST_F(VigilSnmpTest, AValidationAsksTheExactIdentifierOnly)
{
    start();
    ScriptedCallback callback(recorder);
    facade.registerValueChangedCallback(below("1"), &callback);
    EXPECT_EQ(validate("1.2", 5), "answer 1 to 1.2 = 5");
    EXPECT_EQ(validate("1.2", "text"), "answer 1 to 1.2 = \"text\"");
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_EQ(validate("1", "text"), "answer 0 to 1 = \"text\"");
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"callback validates 1.3.6.1.4.1.32473.1 = \"text\""}));
    facade.deregisterValueChangedCallback(&callback);
}

TEST_F(VigilSnmpTest, TheCallbacksStatusIsPassedOnUnchanged)
{
    start();
    ScriptedCallback callback(recorder);
    facade.registerValueChangedCallback(below("1"), &callback);
    for (const unsigned int verdict : {0u, 1u, 2u, 18u, 77u, 4294967295u}) {
        callback.verdict = verdict;
        const std::string status = std::to_string(static_cast<int>(verdict));
        EXPECT_EQ(validate("1", 5), "answer " + status + " to 1 = 5");
        EXPECT_EQ(validate("1", "x"), "answer " + status + " to 1 = \"x\"");
    }
    facade.deregisterValueChangedCallback(&callback);
}

TEST_F(VigilSnmpTest, AnAnswerReturnsTheRequestsStoreTypeInsideItsBindingOnly)
{
    start();
    service.send(base::SnmpIntType, encodedInt("1", 5, 4711), base::Validation);
    service.send(base::SnmpStringType, encodedString("2", "x", -3), base::Validation);
    using Frame = support::FakeService::Frame;
    ASSERT_TRUE(service.waitForFrame([](const Frame& f) { return f.header.dataType == 3; }));
    for (const Frame& frame : service.frames()) {
        if (frame.header.dataType == base::SnmpIntResponseType) {
            const base::SnmpIntResponse answer(frame.payload);
            EXPECT_EQ(answer.varbind.storeType(), 4711);
            EXPECT_EQ(answer.storeType(), 0);
            EXPECT_EQ(frame.header.clientCallbackId, 2u);
        } else if (frame.header.dataType == base::SnmpStringResponseType) {
            const base::SnmpStringResponse answer(frame.payload);
            EXPECT_EQ(answer.varbind.storeType(), -3);
            EXPECT_EQ(answer.storeType(), 0);
            EXPECT_EQ(frame.header.clientCallbackId, 2u);
        }
    }
}

TEST_F(VigilSnmpTest, ACallbackMayPublish)
{
    start();
    ScriptedCallback callback(recorder);
    callback.onCall = [this] { facade.sendValue(below("2"), 6, 0); };
    facade.registerValueChangedCallback(below("1"), &callback);
    commit("1", 5);
    EXPECT_THAT(publications(), ElementsAreArray({set("2", 6)}));
    facade.deregisterValueChangedCallback(&callback);
}

TEST_F(VigilSnmpTest, AThrowingCallbackIsLoggedAndTheConnectionStays)
{
    start();
    ScriptedCallback callback(recorder);
    callback.onCall = [] { throw std::runtime_error("out of luck"); };
    facade.registerValueChangedCallback(below("1"), &callback);
    commit("1", 5);
    EXPECT_EQ(validate("1", 5), "answer 5 to 1 = 5");
    EXPECT_EQ(validate("2", 5), "answer 1 to 2 = 5");
    callback.onCall = [] { throw 5; };
    EXPECT_EQ(validate("1", "x"), "answer 5 to 1 = \"x\"");
    EXPECT_EQ(log.count("___ERROR___ callbackValueChanged threw: out of luck"), 1);
    EXPECT_EQ(log.count("___ERROR___ callbackValidateValue threw: out of luck"), 1);
    EXPECT_EQ(log.count("___ERROR___ callbackValidateValue threw: something that is no std::exception"), 1);
    EXPECT_EQ(service.connections(), 1);
    facade.deregisterValueChangedCallback(&callback);
}

TEST_F(VigilSnmpTest, DeregistrationWaitsForACallInProgress)
{
    start();
    QSemaphore called;
    QSemaphore goOn;
    std::atomic<bool> callIsOver{false};
    ScriptedCallback callback(recorder);
    callback.onCall = [&] {
        called.release();
        goOn.tryAcquire(1, support::deadlineMs);
        callIsOver = true;
    };
    facade.registerValueChangedCallback(below("1"), &callback);
    service.send(base::SnmpIntType, encodedInt("1", 5), base::PlainValue);
    ASSERT_TRUE(called.tryAcquire(1, support::deadlineMs));
    bool wasOver = false;
    std::thread other([&] {
        facade.deregisterValueChangedCallback(&callback);
        wasOver = callIsOver;
    });
    EXPECT_FALSE(callIsOver);
    goOn.release();
    other.join();
    EXPECT_TRUE(wasOver);
}

// --- Calls refused inside a callback

/// A call refused inside a callback, and its name in the log.
struct ForbiddenCall
{
    std::string name;
    std::function<void(vigil::VigilSnmpInterface&, ScriptedCallback&, ScriptedStateCallback&)> call;
};

const std::vector<ForbiddenCall> forbiddenCalls = {
    {"registerValueChangedCallback",
     [](auto& facade, auto& callback, auto&) { facade.registerValueChangedCallback(below("7"), &callback); }},
    {"deregisterValueChangedCallback",
     [](auto& facade, auto& callback, auto&) { facade.deregisterValueChangedCallback(&callback); }},
    {"deregisterValueChanged", [](auto& facade, auto&, auto&) { facade.deregisterValueChanged(below("1")); }},
    {"registerStateInfoCallback",
     [](auto& facade, auto&, auto& state) { facade.registerStateInfoCallback(&state); }},
    {"deregisterStateInfoCallback",
     [](auto& facade, auto&, auto& state) { facade.deregisterStateInfoCallback(&state); }},
    {"VigilSnmp::cleanup", [](auto& facade, auto&, auto&) { facade.cleanup(); }},
};

TEST_F(VigilSnmpTest, ForbiddenCallsInsideAValueCallbackReturnAtOnceAndAreLogged)
{
    start();
    ScriptedCallback callback(recorder);
    ScriptedStateCallback stateCallback(recorder);
    callback.onCall = [&] {
        for (const ForbiddenCall& forbidden : forbiddenCalls)
            forbidden.call(facade, callback, stateCallback);
    };
    facade.registerValueChangedCallback(below("1"), &callback);
    EXPECT_EQ(validate("1", 5), "answer 0 to 1 = 5");
    EXPECT_EQ(validate("1", "x"), "answer 0 to 1 = \"x\"");
    commit("1", 5);
    commit("1", "x");
    EXPECT_EQ(validate("7", 5), "answer 1 to 7 = 5") << "nothing was registered";
    EXPECT_EQ(recorder.lines().size(), 4u) << "nothing was deregistered";
    for (const ForbiddenCall& forbidden : forbiddenCalls) {
        EXPECT_EQ(log.count("___ERROR___ " + forbidden.name + " was called from inside a callback"), 4)
            << forbidden.name;
    }
    facade.deregisterValueChangedCallback(&callback);
}

// The only test with the library's own 5-second retry, so it checks everything about a reconnect.
TEST_F(VigilSnmpTest, AfterALossTheLibraryReconnectsAndCallsTheStateCallbacks)
{
    start();
    ScriptedCallback callback(recorder);
    ScriptedStateCallback stateCallback(recorder);
    stateCallback.onCall = [&] {
        for (const ForbiddenCall& forbidden : forbiddenCalls)
            forbidden.call(facade, callback, stateCallback);
    };
    facade.registerStateInfoCallback(&stateCallback);
    facade.sendValue(below("2"), 5, 1);
    facade.sendValue(below("1"), "text", 1);
    facade.unsetOid(below("1.5"));
    ASSERT_EQ(publications().size(), 3u);

    service.closeConnection();
    ASSERT_TRUE(log.waitFor("[Client::onDisconnected] Disconnected from snmp service."));
    facade.sendValue(below("3"), 6, 0);
    ASSERT_TRUE(service.waitForConnections(2));
    EXPECT_THAT(publications(), ElementsAreArray({set("1", "text"), unset("1.5"), set("2", 5), set("3", 6)}));

    EXPECT_THAT(recorder.lines(), ElementsAreArray({"disconnected", "connected"}));
    for (const ForbiddenCall& forbidden : forbiddenCalls) {
        EXPECT_EQ(log.count("___ERROR___ " + forbidden.name + " was called from inside a callback"), 2)
            << forbidden.name;
    }
    facade.deregisterStateInfoCallback(&stateCallback);
}

// --- Records from the service

TEST_F(VigilSnmpTest, FramesOfUnknownMeaningAreIgnoredWithoutALine)
{
    start();
    ScriptedCallback callback(recorder);
    facade.registerValueChangedCallback(below("1"), &callback);
    const std::size_t lines = log.lines().size();
    service.send(base::SnmpIntType, encodedInt("1", 5), base::ValueAndNotify);
    service.send(base::SnmpIntType, encodedInt("1", 5), 3);
    service.send(base::SnmpIntType, encodedInt("1", 5), -1);
    service.send(base::SnmpIntResponseType, encodedInt("1", 5), base::PlainValue);
    service.send(base::SnmpStringResponseType, encodedInt("1", 5), base::Validation);
    service.send(77, "whatever", base::PlainValue);
    EXPECT_EQ(validate("2", 5), "answer 1 to 2 = 5");
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_EQ(log.lines().size(), lines);
    facade.deregisterValueChangedCallback(&callback);
}

/// Sends the record as a plain value and as a validation, and checks that the library survives both.
class HostileRecord : public support::LibraryTest
{
protected:
    void sendToBothRoads(int dataType, const QByteArray& payload)
    {
        service.send(dataType, payload, base::PlainValue);
        service.send(dataType, payload, base::Validation);
    }

    void expectTheConnectionToLiveOn()
    {
        EXPECT_EQ(validate("2", 5), "answer 1 to 2 = 5");
        EXPECT_EQ(service.connections(), 1);
        EXPECT_EQ(service.disconnections(), 0);
    }
};

TEST_F(HostileRecord, AMissingPropertyIsLoggedAndTheRecordDropped)
{
    start();
    const QByteArray storeType = propertyBytes(0, int32Bytes(0));
    const QByteArray value = propertyBytes(2, int32Bytes(5));
    sendToBothRoads(base::SnmpIntType, storeType + value);
    sendToBothRoads(base::SnmpStringType, storeType + value);
    sendToBothRoads(base::SnmpIntType, value);
    expectTheConnectionToLiveOn();
    EXPECT_EQ(log.count("Received incomplete structure SnmpInt: Missing property 'Oid'"), 2);
    EXPECT_EQ(log.count("Received incomplete structure SnmpString: Missing property 'Oid'"), 2);
    EXPECT_EQ(log.count("Received incomplete structure SnmpInt: Missing property 'StoreType'"), 2);
    EXPECT_EQ(log.count("notifyAll"), 0);
}

TEST_F(HostileRecord, ANegativeLengthIsLoggedAndTheRecordDropped)
{
    start();
    const QByteArray storeType = propertyBytes(0, int32Bytes(0));
    sendToBothRoads(base::SnmpIntType, storeType + propertyBytes(1, -8, QByteArray()));
    sendToBothRoads(base::SnmpStringType, propertyBytes(-5, -8, int32Bytes(0)) + storeType);
    expectTheConnectionToLiveOn();
    EXPECT_EQ(log.count("Received malformed structure SnmpInt: Property length -8"), 2);
    EXPECT_EQ(log.count("Received malformed structure SnmpString: Property length -8"), 2);
    EXPECT_EQ(log.count("notifyAll"), 0);
}

TEST_F(HostileRecord, ATextLengthBeyondTheBytesIsSurvived)
{
    start();
    const QByteArray storeType = propertyBytes(0, int32Bytes(0));
    for (const qint32 length : {2147483647, -1, -2147483647 - 1, 1000}) {
        sendToBothRoads(base::SnmpStringType, storeType + propertyBytes(1, int32Bytes(length) + "1.2"));
        sendToBothRoads(base::SnmpIntType, storeType + propertyBytes(1, int32Bytes(length) + "1.2"));
    }
    expectTheConnectionToLiveOn();
}

TEST_F(HostileRecord, ARecordCutShortAnywhereIsSurvived)
{
    start();
    const QByteArray number = encodedInt("1.2", 5);
    const QByteArray text = encodedString("1.2", "text");
    for (int size = 0; size < number.size(); ++size)
        sendToBothRoads(base::SnmpIntType, number.left(size));
    for (int size = 0; size < text.size(); ++size)
        sendToBothRoads(base::SnmpStringType, text.left(size));
    expectTheConnectionToLiveOn();
}

TEST_F(HostileRecord, BytesOutsideAFrameAreDroppedAndTheNextFrameIsRead)
{
    start();
    service.sendRaw(QByteArray(16, 'x'));
    ASSERT_TRUE(log.waitFor("___Network error detected - resetting buffers___"));
    expectTheConnectionToLiveOn();
}

TEST_F(HostileRecord, AnImpossibleFrameLengthCountsAsABadFrame)
{
    start();
    int errors = 0;
    for (const char* length :
         {"0000000000000019", "0000000004000001", "7fffffffffffffff", "ffffffffffffffff"}) {
        service.sendRaw(QByteArray::fromHex("abba08154711f007") + QByteArray::fromHex(length));
        ++errors;
        validate("2", 5);
        EXPECT_EQ(log.count("___Network error detected - resetting buffers___"), errors) << length;
    }
    expectTheConnectionToLiveOn();
}

} // namespace
