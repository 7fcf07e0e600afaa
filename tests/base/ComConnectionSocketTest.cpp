// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/ComConnectionSocket.h"

#include <gmock/gmock.h>

#include <QHostAddress>
#include <QMetaMethod>
#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/wire/SnmpString.h"
#include "support/FakeService.h"
#include "support/FreePort.h"
#include "support/MatchesPattern.h"
#include "support/QtMessages.h"
#include "support/RunUntil.h"

using base::ConnectionSettings;
using base::FrameHeader;
using support::FakeService;
using support::MatchesPattern;
using support::QtMessages;
using support::runUntil;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct Received
{
    int dataType;
    std::string payload;
    int callbackId;
};

QByteArray frame(quint64 counter, const QByteArray& payload, quint64 updateCounter = 0)
{
    FrameHeader header;
    header.dataType = 1;
    header.messageCounter = counter;
    header.updateMessageCounter = updateCounter;
    return header.toBytes(payload.size()) + payload;
}

QByteArray prefix(const char* magicAndLength)
{
    return QByteArray::fromHex(magicAndLength);
}

/// A text record with an encoding a little longer than that many bytes.
base::SnmpString textOfSize(std::size_t bytes)
{
    base::SnmpString record;
    record.oid = "1.2";
    record.value.assign(bytes, 'x');
    return record;
}

const QByteArray junk = "these bytes have never been a frame";

} // namespace

class ComConnectionSocket : public testing::Test
{
protected:
    ComConnectionSocket() : socket(std::make_unique<base::ComConnectionSocket>())
    {
        const auto keep = [this](const QString& text) { log.push_back(text.toStdString()); };
        using Socket = base::ComConnectionSocket;
        QObject::connect(socket.get(), &Socket::signal_debugMessage, keep);
        QObject::connect(socket.get(), &Socket::signal_logMessage, keep);
        QObject::connect(socket.get(), &Socket::signal_errorMessage, keep);
        QObject::connect(socket.get(), &Socket::signal_loggingMessage, [] { FAIL() << "never emitted"; });
        QObject::connect(socket.get(), &Socket::signal_connected, [this] { events += "connected "; });
        QObject::connect(socket.get(), &Socket::signal_disconnected, [this] { events += "disconnected "; });
        QObject::connect(socket.get(), &Socket::signal_disconnectInfo,
                         [this](const QString& address, uint port, const QString& name) {
                             events += "info(" + address.toStdString() + ',' + std::to_string(port) + ',' +
                                       name.toStdString() + ") ";
                         });
        QObject::connect(socket.get(), &Socket::signal_sigdb_dataReceived,
                         [this](int dataType, QByteArray& payload, int callbackId) {
                             received.push_back({dataType, payload.toStdString(), callbackId});
                             if (const auto action = onReceived) // a copy: it may reset the original
                                 action();
                         });
    }

    ConnectionSettings settings() const
    {
        ConnectionSettings settings;
        settings.host = QStringLiteral("127.0.0.1");
        settings.port = service.port();
        return settings;
    }

    std::string port() const { return std::to_string(service.port()); }

    void connectToService()
    {
        const int before = service.connections();
        ASSERT_TRUE(socket->connectToServer(settings()));
        ASSERT_TRUE(service.waitForConnections(before + 1));
        log.clear();
        events.clear();
    }

    bool waitForReceived(std::size_t count)
    {
        return runUntil([&] { return received.size() >= count; });
    }

    bool waitForLog(const std::string& text)
    {
        return runUntil([&] { return logHas(text); });
    }

    bool logHas(const std::string& text) const
    {
        return std::find(log.begin(), log.end(), text) != log.end();
    }

    /// The error lines of the log, without their prefix.
    std::vector<std::string> errors() const
    {
        const std::string prefix = "___ERROR___ CCS::LOG: ";
        std::vector<std::string> lines;
        for (const std::string& line : log) {
            if (line.rfind(prefix, 0) == 0)
                lines.push_back(line.substr(prefix.size()));
        }
        return lines;
    }

    std::vector<std::string> payloads() const
    {
        std::vector<std::string> list;
        for (const Received& one : received)
            list.push_back(one.payload);
        return list;
    }

    /// Sends bytes in one piece and waits until the socket has read them.
    void deliver(const QByteArray& bytes)
    {
        int reads = 0;
        const auto counting =
            QObject::connect(socket->socket(), &QTcpSocket::readyRead, socket.get(), [&reads] { ++reads; });
        service.sendRaw(bytes);
        ASSERT_TRUE(runUntil([&] { return reads > 0; }));
        QObject::disconnect(counting);
    }

    /// Waits until the socket will yield to other events during the next read.
    static void letTheYieldComeDue()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        runUntil([&] { return elapsed.hasExpired(250); });
    }

    /// Has the socket receive the frame "a" and yield to other events, of which action is one.
    void runDuringTheYield(const std::function<void()>& action)
    {
        letTheYieldComeDue();
        bool hasRun = false;
        onReceived = [&] {
            onReceived = nullptr;
            QMetaObject::invokeMethod(
                socket.get(),
                [&] {
                    hasRun = true;
                    action();
                },
                Qt::QueuedConnection);
        };
        service.sendRaw(frame(1, "a"));
        ASSERT_TRUE(socket->socket()->waitForReadyRead(10000)); // runs no event loop of its own
        ASSERT_TRUE(hasRun);
    }

    /// Brings the receiver into the state after a network error.
    void sendJunk()
    {
        deliver(junk);
        ASSERT_THAT(errors(), ElementsAre("___Network error detected - resetting buffers___"));
        log.clear();
    }

    FakeService service;
    std::vector<std::string> log;
    std::string events;
    std::vector<Received> received;
    std::function<void()> onReceived;
    std::unique_ptr<base::ComConnectionSocket> socket;
};

TEST_F(ComConnectionSocket, TheMetaObjectListsSignalsAndSlotsInTheirOrder)
{
    const QMetaObject& meta = base::ComConnectionSocket::staticMetaObject;
    std::vector<std::string> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const bool isPrivate = method.access() == QMetaMethod::Private;
        methods.push_back((isPrivate ? "private " : "") + method.methodSignature().toStdString());
    }
    EXPECT_THAT(methods, ElementsAre("signal_connected()", "signal_disconnected()",
                                     "signal_disconnectInfo(QString,uint,QString)",
                                     "signal_loggingMessage(QString,bool)", "signal_logMessage(QString)",
                                     "signal_errorMessage(QString)", "signal_debugMessage(QString)",
                                     "signal_sigdb_dataReceived(int,QByteArray&,int)",
                                     "slot_setSendUpdateMessageCounter(qulonglong)",
                                     "private slot_currentConnectionDisconnected()",
                                     "private slot_readDataFromSocket()", "private slot_readyRead()",
                                     "private slot_computeReceivedData()",
                                     "slot_sendSerializedData(QByteArray,int,int)"));
}

// Connecting

TEST_F(ComConnectionSocket, BeginsWithoutASocket)
{
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_FALSE(socket->isConnected());
}

TEST_F(ComConnectionSocket, ConnectsAndSaysSo)
{
    EXPECT_TRUE(socket->connectToServer(settings()));
    EXPECT_TRUE(socket->isConnected());
    EXPECT_NE(socket->socket(), nullptr);
    EXPECT_EQ(events, "connected ");
    EXPECT_THAT(log,
                ElementsAre("CCS::LOG: connectToHost(127.0.0.1  - port: " + port() + ") ... please wait ... ",
                            "CCS::LOG: >>>>>>  CONNECTED from 127.0.0.1:" + port() + " 127.0.0.1 <<<<<<"));
    EXPECT_TRUE(service.waitForConnections(1));
}

TEST_F(ComConnectionSocket, AnEmptyHostIsReportedAndNotTried)
{
    EXPECT_FALSE(socket->connectToServer(ConnectionSettings()));
    EXPECT_THAT(log, ElementsAre("CCS::LOG: NOT CONNECTED", "___ERROR___ CCS::LOG: Host is empty"));
    EXPECT_EQ(events, "");
}

TEST_F(ComConnectionSocket, AnEmptyHostDoesNotReplaceTheRememberedSettings)
{
    connectToService();
    socket->closeConnection();
    EXPECT_FALSE(socket->connectToServer(ConnectionSettings()));
    EXPECT_TRUE(socket->reconnect());
}

TEST_F(ComConnectionSocket, AFailedConnectionIsReportedInFull)
{
    service.refuseConnections();
    const QtMessages messages;
    EXPECT_FALSE(socket->connectToServer(settings()));
    EXPECT_FALSE(socket->isConnected());
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_EQ(events, "");
    EXPECT_THAT(
        log,
        ElementsAre("CCS::LOG: connectToHost(127.0.0.1  - port: " + port() + ") ... please wait ... ",
                    "CCS::LOG: NOT CONNECTED",
                    "___ERROR___ CCS::LOG: connectToHost timed out.\n(Timeout was: 5000 ms)\nNOT CONNECTED",
                    "___ERROR___ CCS::LOG: ___NOT CONNECTED___"));
    EXPECT_EQ(messages.all(), QStringList("___WARNING______WARNING______WARNING______WARNING___"));
}

TEST_F(ComConnectionSocket, TheReportNamesTheTimeOutOfTheSettings)
{
    service.refuseConnections();
    const QtMessages messages;
    ConnectionSettings impatient = settings();
    impatient.connectTimeoutMs = 1234;
    EXPECT_FALSE(socket->connectToServer(impatient));
    EXPECT_THAT(errors(),
                testing::Contains("connectToHost timed out.\n(Timeout was: 1234 ms)\nNOT CONNECTED"));
}

TEST_F(ComConnectionSocket, AnUnreadableHostNameFailsAsATimeOutDoes)
{
    const QtMessages messages;
    ConnectionSettings nowhere = settings();
    nowhere.host = QStringLiteral("no host.invalid");
    EXPECT_FALSE(socket->connectToServer(nowhere));
    EXPECT_TRUE(logHas("___ERROR___ CCS::LOG: ___NOT CONNECTED___"));
}

TEST_F(ComConnectionSocket, ConnectsOnceTheServiceIsThere)
{
    const QtMessages messages;
    service.refuseConnections();
    EXPECT_FALSE(socket->connectToServer(settings()));
    service.acceptConnections();
    EXPECT_TRUE(socket->reconnect());
}

TEST_F(ComConnectionSocket, ReconnectWithASocketFailsAtOnceAndSilently)
{
    connectToService();
    EXPECT_FALSE(socket->reconnect());
    EXPECT_THAT(log, IsEmpty());
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocket, ReconnectUsesTheRememberedSettings)
{
    connectToService();
    socket->closeConnection();
    EXPECT_TRUE(socket->reconnect());
    EXPECT_TRUE(service.waitForConnections(2));
}

TEST_F(ComConnectionSocket, ReconnectBeforeAnyConnectionHasNoHost)
{
    EXPECT_FALSE(socket->reconnect());
    EXPECT_THAT(errors(), ElementsAre("Host is empty"));
}

TEST_F(ComConnectionSocket, ANewConnectionReplacesTheOldOne)
{
    connectToService();
    EXPECT_TRUE(socket->connectToServer(settings()));
    EXPECT_EQ(events, "info(127.0.0.1," + port() + ",127.0.0.1) disconnected connected ");
    EXPECT_TRUE(runUntil([&] { return service.disconnections() == 1; }));
    EXPECT_TRUE(runUntil([&] { return service.connections() == 2; }));
    EXPECT_TRUE(socket->isConnected());
}

// Disconnecting

TEST_F(ComConnectionSocket, ALostPeerIsReported)
{
    connectToService();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_THAT(log,
                ElementsAre("CCS::LOG: >>>>>  DISCONNECTED from 127.0.0.1:" + port() + " 127.0.0.1 <<<<<"));
    EXPECT_EQ(events, "info(127.0.0.1," + port() + ",127.0.0.1) disconnected ");
}

TEST_F(ComConnectionSocket, ReceivesTheLastFrameBeforeThePeerCloses)
{
    connectToService();
    service.sendRaw(frame(1, "farewell"));
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_THAT(payloads(), ElementsAre("farewell"));
}

TEST_F(ComConnectionSocket, CloseConnectionEndsTheConnection)
{
    connectToService();
    socket->closeConnection();
    EXPECT_FALSE(socket->isConnected());
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ComConnectionSocket, CloseConnectionIsReportedLikeALossWhenNothingIsLeftToWrite)
{
    connectToService();
    socket->closeConnection();
    EXPECT_EQ(events, "info(127.0.0.1," + port() + ",127.0.0.1) disconnected ");
}

TEST_F(ComConnectionSocket, CloseConnectionDoesNotWaitForAStalledPeer)
{
    connectToService();
    service.stopReading();
    const base::SnmpString large = textOfSize(20000000);
    ASSERT_TRUE(socket->sendSerializedData(&large, 1, 0));
    ASSERT_GT(socket->socket()->bytesToWrite(), 0);

    events.clear();
    socket->closeConnection();
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_EQ(events, "");
    service.resumeReading();
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ComConnectionSocket, CloseConnectionWithoutOneDoesNothing)
{
    socket->closeConnection();
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(events, "");
}

TEST_F(ComConnectionSocket, DestructionClosesTheConnection)
{
    connectToService();
    socket.reset();
    EXPECT_TRUE(service.waitForDisconnections(1));
}

// Sending

TEST_F(ComConnectionSocket, AFrameIsTheHeaderAndTheRecord)
{
    connectToService();
    base::SnmpString record;
    record.oid = "1.2";
    record.value = "abc";
    socket->slot_setSendUpdateMessageCounter(0x0A0B);
    EXPECT_TRUE(socket->sendSerializedData(&record, 1, 2));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.receivedBytes().toHex().toUpper(), "ABBA08154711F007" // magic
                                                         "0000000000000046" // length: 26 and 44
                                                         "0001"             // data type
                                                         "0000000000000002" // callback id
                                                         "0000000000000001" // message counter
                                                         "0000000000000A0B" // update message counter
                                                         "000000000000000400000000"
                                                         "000000010000000800000004312E3200"
                                                         "00000002000000080000000461626300");
}

TEST_F(ComConnectionSocket, FramesAreNumberedFromOne)
{
    connectToService();
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(3));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(service.frames()[i].header.messageCounter, i + 1);
}

TEST_F(ComConnectionSocket, NumbersFramesFromOneOnEachConnection)
{
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    socket->closeConnection();
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(2));
    EXPECT_EQ(service.frames()[1].connection, 2);
    EXPECT_EQ(service.frames()[1].header.messageCounter, 1u);
}

TEST_F(ComConnectionSocket, ANewConnectionForgetsTheUpdateCounterToSend)
{
    connectToService();
    socket->slot_setSendUpdateMessageCounter(5);
    socket->closeConnection();
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].header.updateMessageCounter, 0u);
}

TEST_F(ComConnectionSocket, ANullRecordGivesAnEmptyPayload)
{
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 3, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.receivedBytes().size(), 42);
    EXPECT_EQ(service.receivedBytes().mid(8, 8).toHex(), "000000000000001a");
    EXPECT_EQ(service.frames()[0].header.dataType, 3);
}

TEST_F(ComConnectionSocket, ANegativeCallbackIdIsSignExtended)
{
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, -2));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].header.clientCallbackId, -2);
}

TEST_F(ComConnectionSocket, SendingIsLoggedInTwoDebugLines)
{
    connectToService();
    socket->sendSerializedData(nullptr, 3, 0);
    EXPECT_THAT(log, ElementsAre("CCS::DEBUG: Send serialized data to server. Type: 3",
                                 "CCS::DEBUG: CCS:SEND MSG # 1 --->"));
}

TEST_F(ComConnectionSocket, APayloadCanBeSentWithoutARecord)
{
    connectToService();
    socket->slot_sendSerializedData("raw", 2, 7);
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].payload, "raw");
    EXPECT_EQ(service.frames()[0].header.dataType, 2);
    EXPECT_EQ(service.frames()[0].header.clientCallbackId, 7);
}

TEST_F(ComConnectionSocket, ALargeRecordArrivesWhole)
{
    connectToService();
    const base::SnmpString large = textOfSize(5000000);
    EXPECT_TRUE(socket->sendSerializedData(&large, 1, 0));
    ASSERT_TRUE(runUntil([&] { return service.frameCount() == 1; }));
    EXPECT_EQ(base::SnmpString(service.frames()[0].payload).value, large.value);
}

TEST_F(ComConnectionSocket, SendingWithoutASocketReconnectsFirst)
{
    connectToService();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].connection, 2);
    EXPECT_EQ(service.frames()[0].header.messageCounter, 1u);
}

TEST_F(ComConnectionSocket, SendingWithoutASocketFailsWhenTheServiceIsGone)
{
    connectToService();
    service.refuseConnections();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    const QtMessages messages;
    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_EQ(errors().back(), "slot_sendSerializedData::cannot reconnect");
}

TEST_F(ComConnectionSocket, SendingBeforeAnyConnectionCannotReconnect)
{
    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_THAT(errors(), ElementsAre("Host is empty", "slot_sendSerializedData::cannot reconnect"));
    EXPECT_FALSE(logHas("CCS::DEBUG: CCS:SEND MSG # 1 --->"));
}

TEST_F(ComConnectionSocket, AFrameForAClosingConnectionIsDroppedButUsesItsNumber)
{
    connectToService();
    service.stopReading();
    const base::SnmpString large = textOfSize(20000000);
    ASSERT_TRUE(socket->sendSerializedData(&large, 1, 0));
    socket->socket()->disconnectFromHost(); // waits for bytes the peer does not read
    ASSERT_NE(socket->socket(), nullptr);
    ASSERT_FALSE(socket->isConnected());

    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_TRUE(logHas("CCS::DEBUG: CCS:SEND MSG # 2 --->"));
    socket->closeConnection();
}

TEST_F(ComConnectionSocket, ABacklogAboveTheLimitRefusesTheRecordWithoutSpendingANumber)
{
    connectToService();
    service.stopReading();
    socket->setMaxPendingBytes(1000);
    const base::SnmpString large = textOfSize(20000000);
    ASSERT_TRUE(socket->sendSerializedData(&large, 1, 0));
    ASSERT_GT(socket->socket()->bytesToWrite(), 1000);

    log.clear();
    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_THAT(log, ElementsAre("CCS::DEBUG: Send serialized data to server. Type: 0"));
    EXPECT_TRUE(socket->isConnected());

    service.resumeReading();
    ASSERT_TRUE(runUntil([&] { return socket->socket()->bytesToWrite() == 0; }));
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(2));
    EXPECT_EQ(service.frames()[1].header.messageCounter, 2u);
}

TEST_F(ComConnectionSocket, ABacklogIsFlushedBeforeASendIsRejected)
{
    connectToService();
    service.stopReading();
    const base::SnmpString chunk = textOfSize(100000);
    int sent = 0;
    while (socket->socket()->bytesToWrite() < 50000) {
        ASSERT_TRUE(socket->sendSerializedData(&chunk, 1, 0));
        ++sent;
    }
    service.resumeReading();
    ASSERT_TRUE(service.waitForFrames(sent - 2)); // runs no event loop, so the rest still waits on this side
    socket->setMaxPendingBytes(1000);
    ASSERT_GT(socket->socket()->bytesToWrite(), 1000);
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_TRUE(runUntil([&] { return service.frameCount() == sent + 1; }));
}

TEST_F(ComConnectionSocket, TenMillionBytesMayWaitUnlessToldOtherwise)
{
    connectToService();
    service.stopReading();
    const base::SnmpString chunk = textOfSize(1000000);
    qint64 waiting = 0;
    while (socket->sendSerializedData(&chunk, 1, 0)) {
        waiting = socket->socket()->bytesToWrite();
        ASSERT_LT(waiting, 11100000);
    }
    EXPECT_GT(waiting, 10000000);
    socket->closeConnection();
}

TEST_F(ComConnectionSocket, EveryTenThousandthFrameOfTheProcessIsReported)
{
    connectToService();
    const QtMessages messages;
    for (int i = 0; i < 10000; ++i)
        ASSERT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_EQ(messages.all().size(), 1);
    EXPECT_THAT(messages.all()[0].toStdString(), MatchesPattern("Overall data sent \\( x10000 \\) [1-9]"));
}

// Receiving

TEST_F(ComConnectionSocket, EmitsEachReceivedFrame)
{
    connectToService();
    service.send(1, "abc", 2);
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].dataType, 1);
    EXPECT_EQ(received[0].payload, "abc");
    EXPECT_EQ(received[0].callbackId, 2);
    EXPECT_THAT(log, ElementsAre("CCS::DEBUG: CCS:REC. MSG # 1 <---",
                                 "CCS::DEBUG: CCS: Raw data received.Type: 1  - Length: 3"));
}

TEST_F(ComConnectionSocket, AnEmptyPayloadIsHandedOnToo)
{
    connectToService();
    service.send(0, "", 0);
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].payload, "");
    EXPECT_TRUE(logHas("CCS::DEBUG: CCS: Raw data received.Type: 0  - Length: 0"));
}

TEST_F(ComConnectionSocket, NegativeHeaderFieldsKeepTheirSign)
{
    connectToService();
    FrameHeader header;
    header.dataType = -3;
    header.clientCallbackId = -4;
    header.messageCounter = 1;
    service.sendFrame(header, "x");
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].dataType, -3);
    EXPECT_EQ(received[0].callbackId, -4);
}

TEST_F(ComConnectionSocket, AFrameInPiecesIsAssembledOnce)
{
    connectToService();
    const QByteArray whole = frame(1, "in pieces");
    int from = 0;
    for (const int to : {5, 16, 17, 41, 42, 45}) {
        deliver(whole.mid(from, to - from));
        EXPECT_THAT(received, IsEmpty()) << to;
        from = to;
    }
    deliver(whole.mid(from));
    EXPECT_THAT(payloads(), ElementsAre("in pieces"));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, AFrameByteByByteIsAssembledOnce)
{
    connectToService();
    for (const char byte : frame(1, "slow") + frame(2, "slower"))
        deliver(QByteArray(1, byte));
    EXPECT_THAT(payloads(), ElementsAre("slow", "slower"));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, TwoFramesInOneReadAreHandedOnInOnePass)
{
    connectToService();
    int reads = 0;
    std::vector<int> readOfFrame;
    onReceived = [&] { readOfFrame.push_back(reads); };
    QObject::connect(socket->socket(), &QTcpSocket::readyRead, socket.get(), [&] { ++reads; });
    service.sendRaw(frame(1, "first") + frame(2, "second"));
    ASSERT_TRUE(waitForReceived(2));
    EXPECT_THAT(payloads(), ElementsAre("first", "second"));
    EXPECT_EQ(readOfFrame[0], readOfFrame[1]);
}

TEST_F(ComConnectionSocket, AFrameAndAHalfInOneReadAreBothAssembled)
{
    connectToService();
    const QByteArray second = frame(2, "second");
    for (const int cut : {10, 16, 30, 44}) {
        received.clear();
        deliver(frame(1, "first") + second.left(cut));
        EXPECT_THAT(payloads(), ElementsAre("first")) << cut;
        deliver(second.mid(cut));
        EXPECT_THAT(payloads(), ElementsAre("first", "second")) << cut;
    }
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, ABurstOfFramesArrivesInOrder)
{
    connectToService();
    QByteArray burst;
    std::vector<std::string> expected;
    for (quint64 i = 1; i <= 3000; ++i) {
        expected.push_back(std::to_string(i));
        burst += frame(i, QByteArray::number(i));
    }
    service.sendRaw(burst);
    ASSERT_TRUE(waitForReceived(expected.size()));
    EXPECT_EQ(payloads(), expected);
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, ALargeFrameIsReceivedWhole)
{
    connectToService();
    const QByteArray large(8000000, 'y');
    service.sendRaw(frame(1, large));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].payload, large.toStdString());
}

TEST_F(ComConnectionSocket, AnIdleConnectionIsLookedAtWithinASecondOrTwo)
{
    connectToService();
    QObject::disconnect(socket->socket(), SIGNAL(readyRead()), socket.get(), SLOT(slot_readyRead()));
    service.sendRaw(frame(1, "unannounced"));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_THAT(payloads(), ElementsAre("unannounced"));
}

TEST_F(ComConnectionSocket, ReceivingRestartsThePollTimer)
{
    connectToService();
    const auto* timer = socket->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 1000);
    ASSERT_TRUE(runUntil([&] { return timer->remainingTime() < 600; }));
    QElapsedTimer clock;
    clock.start();
    const int before = timer->remainingTime();
    deliver("x");
    const int after = timer->remainingTime();
    EXPECT_GT(clock.elapsed() + after, before + 200) << "it comes due later";
}

TEST_F(ComConnectionSocket, WithoutAConnectionThePollTimerStops)
{
    const auto* timer = socket->findChild<QTimer*>();
    EXPECT_FALSE(timer->isActive());
    connectToService();
    EXPECT_TRUE(timer->isActive());
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_FALSE(timer->isActive());
}

// Bad frames

TEST_F(ComConnectionSocket, AWrongMagicIsReportedInSixDebugLinesAndOneError)
{
    connectToService();
    const QtMessages messages;
    deliver(junk);
    EXPECT_EQ(messages.all(), QStringList({"_______________________________________________",
                                           "_______________________________________________",
                                           "__________________ERROR________________________",
                                           "_______________________________________________",
                                           "___Network error detected - resetting buffers__",
                                           "_______________________________________________"}));
    EXPECT_THAT(log, ElementsAre("___ERROR___ CCS::LOG: ___Network error detected - resetting buffers___"));
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocket, FewerBytesThanAPrefixAreNotJudged)
{
    connectToService();
    const QtMessages messages;
    deliver(junk.left(15));
    EXPECT_THAT(errors(), IsEmpty());
    deliver(junk.mid(15, 1));
    EXPECT_THAT(errors(), ElementsAre("___Network error detected - resetting buffers___"));
}

TEST_F(ComConnectionSocket, AWrongMagicDropsTheRestOfTheBuffer)
{
    connectToService();
    const QtMessages messages;
    deliver(junk + frame(1, "lost with it"));
    EXPECT_THAT(received, IsEmpty());
    deliver(frame(2, "new start"));
    EXPECT_THAT(payloads(), ElementsAre("new start"));
}

TEST_F(ComConnectionSocket, AWrongMagicKeepsTheFramesBeforeIt)
{
    connectToService();
    const QtMessages messages;
    deliver(frame(1, "kept") + junk + frame(2, "lost"));
    EXPECT_THAT(payloads(), ElementsAre("kept"));
    EXPECT_EQ(errors().size(), 1u);
}

TEST_F(ComConnectionSocket, AfterAWrongMagicAnyNumberIsAcceptedOnce)
{
    connectToService();
    const QtMessages messages;
    sendJunk();
    deliver(frame(77, "any"));
    EXPECT_THAT(errors(), IsEmpty());
    deliver(frame(79, "not any"));
    EXPECT_THAT(errors(), ElementsAre("Unexpected received message counter: 79. "
                                      "Last received message counter was 77."));
    EXPECT_THAT(payloads(), ElementsAre("any", "not any"));
}

TEST_F(ComConnectionSocket, AWrongMagicAlsoRestartsTheNumberingOfSentFrames)
{
    connectToService();
    const QtMessages messages;
    socket->slot_setSendUpdateMessageCounter(5);
    socket->sendSerializedData(nullptr, 0, 0);
    sendJunk();
    socket->sendSerializedData(nullptr, 0, 0);
    ASSERT_TRUE(service.waitForFrames(2));
    EXPECT_EQ(service.frames()[1].header.messageCounter, 1u);
    EXPECT_EQ(service.frames()[1].header.updateMessageCounter, 0u);
}

TEST_F(ComConnectionSocket, AWrongMagicForgetsTheReceivedUpdateCounter)
{
    connectToService();
    const QtMessages messages;
    deliver(frame(1, "", 5));
    sendJunk();
    deliver(frame(2, "", 9));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, AnImpossibleLengthIsHandledAsAWrongMagic)
{
    connectToService();
    for (const char* impossible : {"ABBA08154711F0070000000000000019",    // 25: less than the header
                                   "ABBA08154711F0070000000000000000",    // 0
                                   "ABBA08154711F0070000000004000001",    // one above 64 MiB
                                   "ABBA08154711F0077FFFFFFFFFFFFFFF",    // the largest
                                   "ABBA08154711F007FFFFFFFFFFFFFFFF"}) { // -1
        const QtMessages messages;
        log.clear();
        received.clear();
        deliver(prefix(impossible) + frame(2, "lost with it"));
        EXPECT_THAT(errors(), ElementsAre("___Network error detected - resetting buffers___")) << impossible;
        EXPECT_EQ(messages.all().size(), 6) << impossible;
        EXPECT_THAT(received, IsEmpty()) << impossible;
        deliver(frame(50, "accepted"));
        EXPECT_THAT(payloads(), ElementsAre("accepted")) << impossible;
    }
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocket, ALengthOf64MebibytesIsWaitedFor)
{
    connectToService();
    deliver(prefix("ABBA08154711F0070000000004000000"));
    deliver("the beginning of much more");
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ComConnectionSocket, ANewConnectionForgetsHalfAFrame)
{
    connectToService();
    deliver(frame(1, "never finished").left(45));
    socket->closeConnection();
    connectToService();
    deliver(frame(1, "whole"));
    EXPECT_THAT(payloads(), ElementsAre("whole"));
}

// The numbers of received frames

TEST_F(ComConnectionSocket, TheFirstFrameIsNumberedOne)
{
    connectToService();
    deliver(frame(1, "first") + frame(2, "second"));
    EXPECT_THAT(payloads(), ElementsAre("first", "second"));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, AFirstFrameNumberedThreeIsDroppedWithTwoErrors)
{
    connectToService();
    deliver(frame(3, "too early"));
    EXPECT_THAT(received, IsEmpty());
    EXPECT_THAT(
        log, ElementsAre("CCS::DEBUG: CCS:REC. MSG # 3 <---",
                         "___ERROR___ CCS::LOG: Unexpected received message counter: 3. "
                         "Last received message counter was 0.",
                         "___ERROR___ CCS::LOG: Received invalid message counter. Ignoring received data."));
}

TEST_F(ComConnectionSocket, FramesAreDroppedUntilOneIsNumberedOne)
{
    connectToService();
    deliver(frame(3, "a") + frame(4, "b") + frame(2, "c"));
    EXPECT_THAT(received, IsEmpty());
    EXPECT_EQ(errors().size(), 6u);
    deliver(frame(1, "d") + frame(2, "e"));
    EXPECT_THAT(payloads(), ElementsAre("d", "e"));
    EXPECT_EQ(errors().size(), 6u);
}

TEST_F(ComConnectionSocket, AFrameNumberedZeroIsDropped)
{
    connectToService();
    deliver(frame(0, "zero"));
    EXPECT_THAT(received, IsEmpty());
    EXPECT_THAT(errors(), ElementsAre("Unexpected received message counter: 0. "
                                      "Last received message counter was 0.",
                                      "Received invalid message counter. Ignoring received data."));
}

TEST_F(ComConnectionSocket, AZeroAmongGoodFramesDropsAllUntilTheNextOne)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(0, "c") + frame(3, "d") + frame(1, "e"));
    EXPECT_THAT(payloads(), ElementsAre("a", "b", "e"));
}

TEST_F(ComConnectionSocket, AGapIsReportedAndTheFrameIsStillHandedOn)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(5, "c"));
    EXPECT_THAT(payloads(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(errors(), ElementsAre("Unexpected received message counter: 5. "
                                      "Last received message counter was 2."));
}

TEST_F(ComConnectionSocket, AfterFrameOneAnyNumberIsTakenSilently)
{
    connectToService();
    deliver(frame(1, "a") + frame(9, "b"));
    EXPECT_THAT(payloads(), ElementsAre("a", "b"));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, APeerMayBeginAgainWithOneSilently)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(3, "c") + frame(1, "d") + frame(2, "e"));
    EXPECT_EQ(received.size(), 5u);
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, ARepeatedNumberIsReported)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(2, "c"));
    EXPECT_EQ(received.size(), 3u);
    EXPECT_THAT(errors(), ElementsAre("Unexpected received message counter: 2. "
                                      "Last received message counter was 2."));
}

TEST_F(ComConnectionSocket, NumbersAreComparedInTheirLow32Bits)
{
    connectToService();
    const QtMessages messages;
    sendJunk();
    deliver(frame(Q_UINT64_C(0xFFFFFFFF), "a") + frame(Q_UINT64_C(0x500000000), "b"));
    EXPECT_EQ(received.size(), 2u);
    EXPECT_THAT(errors(), IsEmpty());
}

// The update counters of received frames

TEST_F(ComConnectionSocket, LostUpdateMessagesAreCounted)
{
    connectToService();
    deliver(frame(1, "a", 5) + frame(2, "b", 9));
    EXPECT_THAT(errors(),
                ElementsAre("COMMUNICATION__ERROR::We lost 3 update messages",
                            "Stored update message counter: 5\n  Received update message counter: 9\n"));
    EXPECT_EQ(received.size(), 2u);
}

TEST_F(ComConnectionSocket, NoUpdateMessageIsMissedFromZeroNorBackwardsNorToTheNext)
{
    connectToService();
    deliver(frame(1, "", 0) + frame(2, "", 9) + frame(3, "", 10) + frame(4, "", 10) + frame(5, "", 4) +
            frame(6, "", 0) + frame(7, "", 100));
    EXPECT_EQ(received.size(), 7u);
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, ADroppedFrameStillCountsItsUpdates)
{
    connectToService();
    deliver(frame(3, "dropped", 5));
    log.clear();
    deliver(frame(1, "taken", 9));
    EXPECT_THAT(errors(), testing::Contains("COMMUNICATION__ERROR::We lost 3 update messages"));
}

// Yielding to other events

TEST_F(ComConnectionSocket, OtherEventsRunDuringAReadOnceAQuarterSecondHasPassed)
{
    connectToService();
    letTheYieldComeDue();

    bool otherEventRan = false;
    onReceived = [&] {
        QMetaObject::invokeMethod(
            socket.get(), [&] { otherEventRan = true; }, Qt::QueuedConnection);
    };
    service.sendRaw(frame(1, "a"));
    ASSERT_TRUE(socket->socket()->waitForReadyRead(10000)); // runs no event loop
    ASSERT_EQ(received.size(), 1u);
    EXPECT_TRUE(otherEventRan);
}

TEST_F(ComConnectionSocket, NoOtherEventsRunWhileAFrameIsIncomplete)
{
    connectToService();
    letTheYieldComeDue();

    bool otherEventRan = false;
    QMetaObject::invokeMethod(
        socket.get(), [&] { otherEventRan = true; }, Qt::QueuedConnection);
    service.sendRaw(frame(1, "a").left(20));
    ASSERT_TRUE(socket->socket()->waitForReadyRead(10000));
    ASSERT_EQ(socket->socket()->bytesAvailable(), 0);
    EXPECT_FALSE(otherEventRan);
}

TEST_F(ComConnectionSocket, NoOtherEventsRunAfterAWrongMagic)
{
    connectToService();
    letTheYieldComeDue();

    const QtMessages messages;
    bool otherEventRan = false;
    QMetaObject::invokeMethod(
        socket.get(), [&] { otherEventRan = true; }, Qt::QueuedConnection);
    service.sendRaw(frame(1, "a") + junk);
    ASSERT_TRUE(socket->socket()->waitForReadyRead(10000));
    ASSERT_THAT(errors(), ElementsAre("___Network error detected - resetting buffers___"));
    EXPECT_FALSE(otherEventRan);
}

TEST_F(ComConnectionSocket, NothingIsReadWhileOtherEventsRun)
{
    connectToService();
    std::size_t receivedInside = 0;
    runDuringTheYield([&] {
        service.sendRaw(frame(2, "b"));
        socket->socket()->waitForReadyRead(10000);
        ASSERT_GT(socket->socket()->bytesAvailable(), 0);
        for (const char* slot : {"slot_readyRead", "slot_readDataFromSocket", "slot_computeReceivedData"})
            QMetaObject::invokeMethod(socket.get(), slot, Qt::DirectConnection);
        receivedInside = received.size();
    });
    EXPECT_EQ(receivedInside, 1u) << "only the frame whose read has yielded";

    ASSERT_TRUE(waitForReceived(2));
    EXPECT_THAT(payloads(), ElementsAre("a", "b"));
}

TEST_F(ComConnectionSocket, TheConnectionMayBeClosedWhileOtherEventsRun)
{
    connectToService();
    letTheYieldComeDue();

    onReceived = [&] {
        QMetaObject::invokeMethod(
            socket.get(), [&] { socket->closeConnection(); }, Qt::QueuedConnection);
    };
    service.sendRaw(frame(1, "a"));
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_TRUE(socket->reconnect());
    ASSERT_TRUE(service.waitForConnections(2));
    deliver(frame(1, "read as ever"));
    EXPECT_THAT(payloads(), ElementsAre("a", "read as ever"));
}

// The events of a yield used to destroy the object and its QTcpSocket in the middle of a read.
TEST_F(ComConnectionSocket, TheObjectMayBeDisposedOfWhileOtherEventsRun)
{
    connectToService();
    letTheYieldComeDue();

    const QPointer<base::ComConnectionSocket> alive(socket.get());
    const QPointer<QTcpSocket> inner(socket->socket());
    bool outlivesTheEvents = false;
    onReceived = [&] {
        auto* context = new QObject; // deleted by the same pass, after its event
        QMetaObject::invokeMethod(
            context,
            [&, context] {
                socket.release()->dispose();
                context->deleteLater();
            },
            Qt::QueuedConnection);
        QObject::connect(context, &QObject::destroyed, [&] { outlivesTheEvents = alive && inner; });
    };
    service.sendRaw(frame(1, "a"));
    EXPECT_TRUE(runUntil([&] { return alive.isNull(); }));
    EXPECT_TRUE(outlivesTheEvents);
    EXPECT_TRUE(service.waitForDisconnections(1));
}

// What the receiver of a frame may do

TEST_F(ComConnectionSocket, TheReceiverMayCloseTheConnection)
{
    connectToService();
    onReceived = [&] { socket->closeConnection(); };
    service.sendRaw(frame(1, "a") + frame(2, "b") + frame(3, "c").left(30));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_TRUE(service.waitForDisconnections(1));
    EXPECT_TRUE(socket->reconnect());
}

TEST_F(ComConnectionSocket, TheReceiverMayCloseAConnectionWithPendingBytes)
{
    connectToService();
    service.stopReading();
    const base::SnmpString large = textOfSize(20000000);
    ASSERT_TRUE(socket->sendSerializedData(&large, 1, 0));
    onReceived = [&] {
        onReceived = nullptr;
        EXPECT_GT(socket->socket()->bytesToWrite(), 0);
        socket->closeConnection();
    };
    service.sendRaw(frame(1, "a") + frame(2, "b"));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(socket->socket(), nullptr);
    service.resumeReading();
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ComConnectionSocket, TheReceiverMayReconnect)
{
    connectToService();
    onReceived = [&] {
        onReceived = nullptr;
        socket->closeConnection();
        EXPECT_TRUE(socket->reconnect());
    };
    service.sendRaw(frame(1, "a") + frame(2, "of the old connection"));
    ASSERT_TRUE(waitForReceived(1));
    ASSERT_TRUE(service.waitForConnections(2));
    service.sendRaw(frame(1, "of the new one"));
    ASSERT_TRUE(waitForReceived(2));
    EXPECT_THAT(payloads(), ElementsAre("a", "of the new one"));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocket, TheReceiverMayConnectOverTheOldConnection)
{
    connectToService();
    onReceived = [&] {
        onReceived = nullptr;
        EXPECT_TRUE(socket->connectToServer(settings()));
    };
    service.sendRaw(frame(1, "a") + frame(2, "of the old connection"));
    ASSERT_TRUE(waitForReceived(1));
    ASSERT_TRUE(service.waitForConnections(2));
    service.sendRaw(frame(1, "of the new one"));
    ASSERT_TRUE(waitForReceived(2));
    EXPECT_THAT(payloads(), ElementsAre("a", "of the new one"));
}

TEST_F(ComConnectionSocket, TheReceiverMayLetTheObjectBeDeleted)
{
    connectToService();
    const QPointer<base::ComConnectionSocket> alive(socket.get());
    onReceived = [&] {
        onReceived = nullptr;
        socket.release()->dispose();
    };
    service.sendRaw(frame(1, "a") + frame(2, "b"));
    EXPECT_TRUE(runUntil([&] { return alive.isNull(); }));
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ComConnectionSocket, TheReceiverMaySendAnAnswer)
{
    connectToService();
    onReceived = [&] { EXPECT_TRUE(socket->sendSerializedData(nullptr, 2, 2)); };
    service.sendRaw(frame(1, "a") + frame(2, "b"));
    ASSERT_TRUE(waitForReceived(2));
    EXPECT_TRUE(service.waitForFrames(2));
}

TEST_F(ComConnectionSocket, ASlotOfTheLossMayReconnect)
{
    connectToService();
    bool reconnected = false;
    QObject::connect(socket.get(), &base::ComConnectionSocket::signal_disconnected,
                     [&] { reconnected = socket->reconnect(); });
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return reconnected; }));
    EXPECT_TRUE(service.waitForConnections(2));
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocket, ASlotOfTheLossMayCloseTheConnection)
{
    connectToService();
    bool closed = false;
    QObject::connect(socket.get(), &base::ComConnectionSocket::signal_disconnectInfo, [&] {
        socket->closeConnection();
        closed = true;
    });
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return closed; }));
    EXPECT_EQ(socket->socket(), nullptr);
}

TEST_F(ComConnectionSocket, APeerLostDuringALongWriteEndsTheWrite)
{
    connectToService();
    service.closeAfterFrames(1);
    const base::SnmpString large = textOfSize(3000000);
    for (int i = 0; i < 20 && socket->isConnected(); ++i)
        socket->sendSerializedData(&large, 1, 0);
    EXPECT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_TRUE(logHas("CCS::LOG: >>>>>  DISCONNECTED from 127.0.0.1:" + port() + " 127.0.0.1 <<<<<"));
}

// The service was not running and its port was in the ephemeral range: the library connected to itself, took
// its own values for a manager's, and kept the service from its port.
TEST(ComConnectionSocketToItself, IsRecognised)
{
    QTcpSocket socket;
    ASSERT_TRUE(support::bindToFreePort(socket));
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), socket.localPort());
    if (!socket.waitForConnected())
        GTEST_SKIP() << "this system does not connect a socket to itself";
    EXPECT_TRUE(base::ComConnectionSocket::isConnectedToItself(socket));
}

TEST(ComConnectionSocketToItself, IsNotSeenInAConnectionToAService)
{
    const FakeService service;
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), service.port());
    ASSERT_TRUE(socket.waitForConnected());
    EXPECT_FALSE(base::ComConnectionSocket::isConnectedToItself(socket));
}
