// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/Client.h"

#include <gmock/gmock.h>

#include <QDate>
#include <QDeadlineTimer>
#include <QMetaMethod>
#include <QThread>
#include <QTimer>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <vigil/VigilSnmpInterface.h>

#include "base/ComConnectionSocket.h"
#include "base/Logging.h"
#include "base/wire/Protocol.h"
#include "support/Deadline.h"
#include "support/FakeService.h"
#include "support/LibraryLog.h"
#include "support/Oids.h"
#include "support/Publications.h"
#include "support/RunUntil.h"
#include "support/ScriptedCallbacks.h"

using support::below;
using support::encodedInt;
using support::encodedString;
using support::FakeService;
using support::LibraryLog;
using support::Recorder;
using support::runUntil;
using support::ScriptedCallback;
using support::ScriptedStateCallback;
using support::set;
using support::unset;
using support::withTrap;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

const std::string markOid = "99.99"; // of a value by which the tests see how far the service is

/// A client in the thread of the test, so that each of its steps can be taken on its own. The facade is not
/// started, so there is no callback store.
class ClientTest : public testing::Test
{
protected:
    ClientTest()
    {
        base::startLogging();
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(service.port()));
    }

    ~ClientTest() override
    {
        client.reset();
        base::stopLogging();
    }

    void startDisconnected()
    {
        service.refuseConnections();
        client->init();
        service.acceptConnections();
    }

    void loseConnection()
    {
        const int losses = log.count(lossText);
        service.closeConnection();
        ASSERT_TRUE(runUntil([&] { return log.count(lossText) > losses; }));
    }

    /// The publications since the last call.
    std::vector<std::string> sent()
    {
        const std::string mark = set(markOid, ++m_mark);
        client->sendValue(below(markOid), m_mark, false);
        service.waitForFrame([&](const auto& frame) { return support::describe(frame) == mark; });
        const std::vector<FakeService::Frame> frames = service.frames();
        std::vector<std::string> lines;
        for (; m_reported < frames.size(); ++m_reported) {
            const std::string line = support::describe(frames[m_reported]);
            if (line.rfind(markOid, 0) != 0)
                lines.push_back(line);
        }
        return lines;
    }

    /// The publications after a reconnect.
    std::vector<std::string> replay()
    {
        sent();
        loseConnection();
        client->onTimerReconnect();
        return sent();
    }

    static constexpr const char* lossText = "[Client::onDisconnected] Disconnected from snmp service.";

    LibraryLog log;
    FakeService service;
    std::unique_ptr<Client> client = std::make_unique<Client>();

private:
    std::size_t m_reported = 0;
    int m_mark = 0;
};

// --- Log

TEST_F(ClientTest, AFloodOfErrorsIsTenLinesAndACount)
{
    client->init();
    auto* socket = client->findChild<base::ComConnectionSocket*>();
    for (int i = 0; i < 2000; ++i)
        socket->logError(QStringLiteral("Unexpected %1.").arg(i));
    client->exit();
    int written = 0;
    int leftOut = 0;
    for (const std::string& line : log.lines()) {
        written += line.rfind("___ERROR___ CCS::LOG: Unexpected ", 0) == 0 ? 1 : 0;
        if (line.find(" more lines like this were left out: ___ERROR___ CCS::LOG: Unexpected ") != line.npos)
            leftOut += std::stoi(line.substr(std::string("___ERROR___ ").size()));
    }
    EXPECT_EQ(written, 10);
    EXPECT_EQ(leftOut, 1990);
}

TEST_F(ClientTest, AFailedConnectIsLoggedWithAllItsLines)
{
    startDisconnected();
    EXPECT_EQ(log.count("___ERROR___ CCS::LOG: connectToHost timed out."), 1);
    EXPECT_EQ(log.count("___ERROR___ CCS::LOG: ___NOT CONNECTED___"), 1);
}

// --- Life

TEST_F(ClientTest, TheMetaObjectListsSignalAndSlotsInTheirOrder)
{
    const QMetaObject& meta = Client::staticMetaObject;
    std::vector<std::string> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const bool isPrivate = method.access() == QMetaMethod::Private;
        const std::string type = method.returnType() == QMetaType::Bool ? "bool " : "";
        methods.push_back((isPrivate ? "private " : "") + type + method.methodSignature().toStdString());
    }
    EXPECT_THAT(methods, ElementsAreArray({"finished()", "init()", "exit()", "bool sendValue(Oid,bool,bool)",
                                           "bool sendValue(Oid,int,bool)", "bool sendValue(Oid,double,bool)",
                                           "bool sendValue(Oid,QString,bool)", "resendAll()", "unsetOid(Oid)",
                                           "unsetOidTree(Oid)", "createConnections()", "onConnected()",
                                           "onDisconnected()", "onTimerReconnect()",
                                           "private receiveData(int,QByteArray&,int)"}));
}

TEST_F(ClientTest, InitConnectsAtOnceAndStartsTheTimerOf5Seconds)
{
    client->init();
    EXPECT_TRUE(service.waitForConnections(1));
    const auto timers = client->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    ASSERT_EQ(timers.size(), 1);
    EXPECT_EQ(timers.front()->interval(), 5000);
    EXPECT_TRUE(timers.front()->isActive());
    EXPECT_FALSE(timers.front()->isSingleShot());
    client->exit();
    EXPECT_FALSE(timers.front()->isActive());
}

TEST_F(ClientTest, TheTimerConnectsOnlyWhileThereIsNoConnection)
{
    startDisconnected();
    EXPECT_EQ(service.connections(), 0);
    client->onTimerReconnect();
    client->onTimerReconnect();
    sent();
    EXPECT_EQ(service.connections(), 1);
}

TEST_F(ClientTest, ExitClosesTheConnectionAndEmitsFinished)
{
    client->init();
    bool finished = false;
    QObject::connect(client.get(), &Client::finished, [&] { finished = true; });
    client->exit();
    EXPECT_TRUE(finished);
    EXPECT_TRUE(service.waitForDisconnections(1));
    EXPECT_FALSE(client->sendValue(below("1"), 5, false));
}

TEST_F(ClientTest, ExitBeforeInitIsHarmless)
{
    client->exit();
    EXPECT_EQ(service.connections(), 0);
}

TEST_F(ClientTest, DestructionClosesTheConnection)
{
    client->init();
    sent();
    client.reset();
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ClientTest, InitConnectionsAndLossesAreLogged)
{
    client->init();
    EXPECT_EQ(log.count("[Client::init] Initializing in thread " +
                        base::toHexString(QThread::currentThread()).toStdString() + "."),
              1);
    EXPECT_EQ(log.count("[Client::onConnected] Connected to snmp service."), 1);
    loseConnection();
    EXPECT_EQ(log.count("[Client::onDisconnected] Disconnected from snmp service."), 1);
}

// --- Publishing

TEST_F(ClientTest, AValuePublishedBeforeTheFirstConnectionIsNotSentButCachedForIt)
{
    startDisconnected();
    EXPECT_FALSE(client->sendValue(below("1"), true, false));
    EXPECT_FALSE(client->sendValue(below("2"), 5, false));
    EXPECT_FALSE(client->sendValue(below("3"), 0.5, false));
    EXPECT_FALSE(client->sendValue(below("4"), QStringLiteral("text"), false));
    client->onTimerReconnect();
    EXPECT_THAT(sent(), ElementsAreArray({set("1", 1), set("2", 5), set("3", "0.5"), set("4", "text")}));
}

TEST_F(ClientTest, AValuePublishedWhileConnectedIsSentAtOnce)
{
    client->init();
    EXPECT_TRUE(client->sendValue(below("1"), true, false));
    EXPECT_TRUE(client->sendValue(below("2"), 5, false));
    EXPECT_TRUE(client->sendValue(below("3"), 0.5, false));
    EXPECT_TRUE(client->sendValue(below("4"), QStringLiteral("text"), false));
    EXPECT_THAT(sent(), ElementsAreArray({set("1", 1), set("2", 5), set("3", "0.5"), set("4", "text")}));
}

TEST_F(ClientTest, TrueIsSentAs1AndFalseAs2)
{
    client->init();
    client->sendValue(below("1"), true, false);
    client->sendValue(below("1"), false, false);
    EXPECT_THAT(sent(), ElementsAreArray({set("1", 1), set("1", 2)}));
}

TEST_F(ClientTest, DoublesAreSentAsTextsOfSixSignificantDigits)
{
    client->init();
    for (const double value : {0.1, 1234567.0, 123456.0, 1.0 / 3.0, -0.5, 0.0})
        client->sendValue(below("1"), value, false);
    EXPECT_THAT(sent(), ElementsAreArray({set("1", "0.1"), set("1", "1.23457e+06"), set("1", "123456"),
                                          set("1", "0.333333"), set("1", "-0.5"), set("1", "0")}));
}

TEST_F(ClientTest, AllKindsOfValuesMayAskForATrap)
{
    client->init();
    client->sendValue(below("1"), false, true);
    client->sendValue(below("2"), 5, true);
    client->sendValue(below("3"), 0.5, true);
    client->sendValue(below("4"), QStringLiteral("text"), true);
    EXPECT_THAT(sent(), ElementsAreArray({withTrap(set("1", 2)), withTrap(set("2", 5)),
                                          withTrap(set("3", "0.5")), withTrap(set("4", "text"))}));
}

TEST_F(ClientTest, IdentifiersTravelRelativeToTheEnterprise)
{
    client->init();
    for (const char* oid : {"1.3.6.1.4.1.32473.127.3", "1.3.6.1.2.1.1", "1.3.6.1.4.1.32474", "2.5", "1.3.6"})
        client->sendValue(Oid::fromStdString(oid), 5, false);
    client->unsetOid(Oid::fromStdString("1.3.6.1.2.1.1"));
    EXPECT_THAT(sent(), ElementsAreArray({set("127.3", 5), set("2.1.1", 5), set("32474", 5), set("2.5", 5),
                                          set("", 5), unset("2.1.1")}));
}

TEST_F(ClientTest, TextAfterANulIsNotSent)
{
    client->init();
    client->sendValue(below("1"), QString(QLatin1String("ab\0cd", 5)), false);
    EXPECT_THAT(sent(), ElementsAreArray({set("1", "ab")}));
}

// --- Replay

TEST_F(ClientTest, AReplaySendsEachIdentifiersLastValueInOidOrderWithoutTraps)
{
    client->init();
    client->sendValue(below("10"), QStringLiteral("old"), true);
    client->sendValue(below("10"), QStringLiteral("new"), true);
    client->sendValue(below("9.1"), 0.25, true);
    client->sendValue(below("9"), 5, true);
    client->sendValue(below("2"), true, true);
    client->sendValue(below("1.5"), false, true);
    client->sendValue(Oid::fromStdString("1.3.6.1.2.1"), 7, true);
    EXPECT_THAT(replay(), ElementsAreArray({set("2.1", 7), set("1.5", 2), set("2", 1), set("9", 5),
                                            set("9.1", "0.25"), set("10", "new")}));
}

TEST_F(ClientTest, AReplayRepeatsUnsets)
{
    client->init();
    client->sendValue(below("2"), 5, false);
    client->sendValue(below("3"), 6, false);
    client->unsetOid(below("2"));
    client->unsetOid(below("1"));
    EXPECT_THAT(replay(), ElementsAreArray({unset("1"), unset("2"), set("3", 6)}));
}

TEST_F(ClientTest, AReplayHoldsValuesPublishedWhileDisconnected)
{
    client->init();
    client->sendValue(below("1"), 5, false);
    client->sendValue(below("2"), 5, false);
    sent();
    loseConnection();
    EXPECT_FALSE(client->sendValue(below("2"), 6, false));
    client->unsetOid(below("1"));
    client->onTimerReconnect();
    EXPECT_THAT(sent(), ElementsAreArray({unset("1"), set("2", 6)}));
}

TEST_F(ClientTest, ACachedValueOfAnUnknownKindIsReportedInsteadOfSent)
{
    struct OpenClient : Client
    {
        using Client::send;
    };
    OpenClient open;
    open.send(below("1").toStdVector(), QVariant(QByteArray("bytes")), false);
    open.send(below("2").toStdVector(), QVariant(QDate()), false);
    EXPECT_EQ(log.count("Invalid datatype 12."), 1);
    EXPECT_EQ(log.count("Invalid datatype 14."), 1);
}

TEST_F(ClientTest, EveryReplayIsTheSame)
{
    client->init();
    client->sendValue(below("1"), true, false);
    client->sendValue(below("2"), 0.1, false);
    client->unsetOid(below("3"));
    const std::vector<std::string> first = replay();
    EXPECT_THAT(first, ElementsAreArray({set("1", 1), set("2", "0.1"), unset("3")}));
    EXPECT_EQ(replay(), first);
}

// --- Trees

TEST_F(ClientTest, UnsettingATreeSendsTheTreesOidOncePerCachedEntry)
{
    client->init();
    client->sendValue(below("1.2.1"), 1, false);
    client->sendValue(below("1.2.2.7"), 2, false);
    client->sendValue(below("1.20"), 3, false);
    client->sendValue(below("1.1"), 4, false);
    sent();
    client->unsetOidTree(below("1.2"));
    EXPECT_THAT(sent(), ElementsAreArray({unset("1.2"), unset("1.2")}));
}

TEST_F(ClientTest, AfterATreeIsUnsetTheReplayRepeatsTheRemovalInsteadOfTheDescendants)
{
    client->init();
    client->sendValue(below("1.2.1"), 1, false);
    client->sendValue(below("1.2.2"), 2, false);
    client->sendValue(below("1.20"), 3, false);
    client->unsetOidTree(below("1.2"));
    EXPECT_THAT(replay(), ElementsAreArray({unset("1.2"), set("1.20", 3)}));
}

TEST_F(ClientTest, TheTreesOwnEntryCountsToo)
{
    client->init();
    client->sendValue(below("1.2"), 1, false);
    client->sendValue(below("1.2.1"), 2, false);
    sent();
    client->unsetOidTree(below("1.2"));
    EXPECT_THAT(sent(), ElementsAreArray({unset("1.2"), unset("1.2")}));
    EXPECT_THAT(replay(), ElementsAreArray({unset("1.2")}));
}

TEST_F(ClientTest, ATreeWithoutDescendantsLeavesNothingInTheCache)
{
    client->init();
    client->sendValue(below("1.2"), 1, false);
    sent();
    client->unsetOidTree(below("1.2"));
    EXPECT_THAT(sent(), ElementsAreArray({unset("1.2")}));
    EXPECT_THAT(replay(), IsEmpty());
}

TEST_F(ClientTest, UnsettingATreeWithoutCachedEntriesSendsAndChangesNothing)
{
    client->init();
    client->sendValue(below("1.1"), 1, false);
    client->sendValue(below("1.3"), 2, false);
    sent();
    client->unsetOidTree(below("1.2"));
    client->unsetOidTree(below("1.1.1"));
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_THAT(replay(), ElementsAreArray({set("1.1", 1), set("1.3", 2)}));
}

TEST_F(ClientTest, ATreeUnsetWhileDisconnectedIsUnsetByTheNextReplay)
{
    startDisconnected();
    client->sendValue(below("1.2.1"), 1, false);
    client->sendValue(below("1.2.2"), 2, false);
    client->unsetOidTree(below("1.2"));
    client->onTimerReconnect();
    EXPECT_THAT(sent(), ElementsAreArray({unset("1.2")}));
}

// --- Without a callback store

TEST_F(ClientTest, TheFirstConnectionMayComeBeforeTheCallbackStore)
{
    startDisconnected();
    client->sendValue(below("1"), 5, false);
    client->onTimerReconnect();
    EXPECT_THAT(sent(), ElementsAreArray({set("1", 5)}));
    loseConnection();
}

TEST_F(ClientTest, WithoutAStoreCommittedValuesAreDroppedAndValidationsRefused)
{
    client->init();
    service.send(base::SnmpIntType, encodedInt("1", 5), base::PlainValue);
    service.send(base::SnmpStringType, encodedString("1", "x"), base::PlainValue);
    service.send(base::SnmpIntType, encodedInt("1", 5), base::Validation);
    service.send(base::SnmpStringType, encodedString("1", "x"), base::Validation);
    ASSERT_TRUE(runUntil([&] { return service.frames().size() >= 2; }));
    EXPECT_THAT(sent(), ElementsAreArray({"answer 1 to 1 = 5", "answer 1 to 1 = \"x\""}));
}

// --- With a callback store

/// The facade is started for its store only; its client connects to another service.
class ClientWithStore : public testing::Test
{
protected:
    ClientWithStore()
    {
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(otherService.port()));
        facade.init("test");
        facade.sendValue(below(markOid), 1, 0); // goes out when its own client is connected
        EXPECT_TRUE(otherService.waitForFrames(1));
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(service.port()));
        facade.registerStateInfoCallback(&stateCallback);
    }

    ~ClientWithStore() override
    {
        facade.deregisterStateInfoCallback(&stateCallback);
        client.reset();
        facade.cleanup();
    }

    LibraryLog log;
    FakeService otherService;
    FakeService service;
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    Recorder recorder;
    ScriptedStateCallback stateCallback{recorder};
    std::unique_ptr<Client> client = std::make_unique<Client>();
};

TEST_F(ClientWithStore, StateCallbacksAreToldBeforeTheReplayBegins)
{
    stateCallback.onCall = [this] { client->sendValue(below("9"), 9, false); };
    client->sendValue(below("1"), 1, false);
    client->init();
    ASSERT_TRUE(service.waitForFrames(3));
    std::vector<std::string> lines;
    for (const FakeService::Frame& frame : service.frames())
        lines.push_back(support::describe(frame));
    EXPECT_THAT(lines, ElementsAreArray({set("9", 9), set("1", 1), set("9", 9)}));
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"connected"}));
}

TEST_F(ClientWithStore, AThrowingStateCallbackDoesNotBlockTheReplay)
{
    stateCallback.onCall = [] { throw std::runtime_error("out of luck"); };
    client->sendValue(below("1"), 1, false);
    client->init();
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(support::describe(service.frames()[0]), set("1", 1));
    EXPECT_TRUE(log.contains("___ERROR___ callbackStateInfo threw: out of luck"));
}

TEST_F(ClientWithStore, ALossIsToldOnce)
{
    client->init();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return recorder.lines().size() >= 2; }));
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"connected", "disconnected"}));
}

TEST_F(ClientWithStore, ExitReportsTheLossToTheStateCallbacks)
{
    client->init();
    client->exit();
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"connected", "disconnected"}));
}

/// A replay long enough for the peer to be lost in the middle of it.
class ClientWithLongReplay : public ClientWithStore
{
protected:
    static constexpr int valueCount = 20000;

    ClientWithLongReplay()
    {
        for (int i = 0; i < valueCount; ++i)
            client->sendValue(cellOf(i), i, false);
        service.refuseConnections();
        client->init();
        service.acceptConnections();
    }

    static Oid cellOf(int value) { return below("1") + static_cast<unsigned int>(value); }

    /// Connects, and starts the replay, to a service that closes the connection after five frames. Returns
    /// whether a write of the replay noticed, so that the loss was reported before any event ran.
    bool loseThePeerDuringTheReplay()
    {
        service.closeAfterFrames(5);
        const std::size_t linesBefore = recorder.lines().size();
        client->onTimerReconnect();
        const bool wasLostInside = recorder.lines().size() == linesBefore + 2;
        EXPECT_TRUE(runUntil([&] { return recorder.lines().size() >= linesBefore + 2; }));
        service.closeAfterFrames(0);
        return wasLostInside;
    }
};

TEST_F(ClientWithLongReplay, ALossDuringTheReplayIsReportedOnce)
{
    constexpr int rounds = 10; // a write does not notice every loss
    int lostInside = 0;
    std::vector<std::string> expected;
    for (int round = 0; round < rounds; ++round) {
        lostInside += loseThePeerDuringTheReplay() ? 1 : 0;
        expected.insert(expected.end(), {"connected", "disconnected"});
        EXPECT_EQ(recorder.lines(), expected);
    }
    EXPECT_GT(lostInside, 0);
}

TEST_F(ClientWithLongReplay, TheReplayAfterALossDuringAReplayIsComplete)
{
    loseThePeerDuringTheReplay();
    const int framesBefore = service.frameCount();

    client->onTimerReconnect();

    ASSERT_TRUE(service.waitForFrames(framesBefore + valueCount));
    const std::vector<FakeService::Frame> frames = service.frames();
    for (int value = 0; value < valueCount; ++value) {
        const FakeService::Frame& frame = frames[static_cast<std::size_t>(framesBefore + value)];
        ASSERT_EQ(support::describe(frame), set("1." + std::to_string(value), value));
    }
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"connected", "disconnected", "connected"}));
}

TEST_F(ClientWithStore, ALossFoundByACallbacksOwnPublishingIsToldAfterTheCallback)
{
    client->init();
    ScriptedCallback callback(recorder);
    callback.onCall = [this] {
        service.closeConnection();
        const QDeadlineTimer deadline(support::deadlineMs);
        while (client->sendValue(below("2"), 5, false) && !deadline.hasExpired())
            QThread::yieldCurrentThread();
        recorder.add("callback over");
    };
    facade.registerValueChangedCallback(below("1"), &callback);
    service.send(base::SnmpIntType, encodedInt("1", 5), base::PlainValue);
    ASSERT_TRUE(runUntil([&] { return recorder.lines().size() >= 4; }));
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"connected", "callback changed 1.3.6.1.4.1.32473.1 = 5",
                                                    "callback over", "disconnected"}));
    facade.deregisterValueChangedCallback(&callback);
}

TEST_F(ClientWithStore, NoConnectionIsMadeFromInsideACallback)
{
    client->init();
    stateCallback.onCall = [this] { client->onTimerReconnect(); };
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return recorder.lines().size() >= 2; }));
    EXPECT_EQ(service.connections(), 1);
    EXPECT_THAT(recorder.lines(), ElementsAreArray({"connected", "disconnected"}));
}

} // namespace
