// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

#include <QHostAddress>
#include <QMetaMethod>
#include <QTcpSocket>

#include "support/FreePort.h"

using base::ConnectionSettings;
using support::FakeService;
using support::QtMessages;
using support::runUntil;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using ComConnectionSocketConnecting = ComConnectionSocketTest;

TEST_F(ComConnectionSocketConnecting, TheMetaObjectListsSignalsAndSlotsInTheirOrder)
{
    const QMetaObject& meta = base::ComConnectionSocket::staticMetaObject;
    std::vector<std::string> methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const bool isPrivate = method.access() == QMetaMethod::Private;
        methods.push_back((isPrivate ? "private " : "") + method.methodSignature().toStdString());
    }
    EXPECT_THAT(
        methods,
        ElementsAreArray(
            {"signal_connected()", "signal_disconnected()", "signal_disconnectInfo(QString,uint,QString)",
             "signal_loggingMessage(QString,bool)", "signal_logMessage(QString)",
             "signal_errorMessage(QString)", "signal_debugMessage(QString)",
             "signal_sigdb_dataReceived(int,QByteArray&,int)", "slot_setSendUpdateMessageCounter(qulonglong)",
             "private slot_currentConnectionDisconnected()", "private slot_readDataFromSocket()",
             "private slot_readyRead()", "private slot_computeReceivedData()",
             "slot_sendSerializedData(QByteArray,int,int)"}));
}

// Connecting

TEST_F(ComConnectionSocketConnecting, StartsWithoutASocket)
{
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_FALSE(socket->isConnected());
}

TEST_F(ComConnectionSocketConnecting, ConnectsAndReportsIt)
{
    EXPECT_TRUE(socket->connectToServer(settings()));
    EXPECT_TRUE(socket->isConnected());
    EXPECT_NE(socket->socket(), nullptr);
    EXPECT_EQ(events, "connected ");
    EXPECT_THAT(log, ElementsAreArray(
                         {"CCS::LOG: connectToHost(127.0.0.1  - port: " + port() + ") ... please wait ... ",
                          "CCS::LOG: >>>>>>  CONNECTED from 127.0.0.1:" + port() + " 127.0.0.1 <<<<<<"}));
    EXPECT_TRUE(service.waitForConnections(1));
}

TEST_F(ComConnectionSocketConnecting, AnEmptyHostIsReportedAndNotTried)
{
    EXPECT_FALSE(socket->connectToServer(ConnectionSettings()));
    EXPECT_THAT(log, ElementsAreArray({"CCS::LOG: NOT CONNECTED", "___ERROR___ CCS::LOG: Host is empty"}));
    EXPECT_EQ(events, "");
}

TEST_F(ComConnectionSocketConnecting, AnEmptyHostDoesNotReplaceTheRememberedSettings)
{
    connectToService();
    socket->closeConnection();
    EXPECT_FALSE(socket->connectToServer(ConnectionSettings()));
    EXPECT_TRUE(socket->reconnect());
}

TEST_F(ComConnectionSocketConnecting, AFailedConnectionIsLoggedInFull)
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

TEST_F(ComConnectionSocketConnecting, TheReportNamesTheTimeOutOfTheSettings)
{
    service.refuseConnections();
    const QtMessages messages;
    ConnectionSettings impatient = settings();
    impatient.connectTimeoutMs = 1234;
    EXPECT_FALSE(socket->connectToServer(impatient));
    EXPECT_THAT(errors(),
                testing::Contains("connectToHost timed out.\n(Timeout was: 1234 ms)\nNOT CONNECTED"));
}

TEST_F(ComConnectionSocketConnecting, AnInvalidHostNameFailsLikeATimeOut)
{
    const QtMessages messages;
    ConnectionSettings nowhere = settings();
    nowhere.host = QStringLiteral("no host.invalid");
    EXPECT_FALSE(socket->connectToServer(nowhere));
    EXPECT_TRUE(logHas("___ERROR___ CCS::LOG: ___NOT CONNECTED___"));
}

TEST_F(ComConnectionSocketConnecting, ConnectsOnceTheServiceRuns)
{
    const QtMessages messages;
    service.refuseConnections();
    EXPECT_FALSE(socket->connectToServer(settings()));
    service.acceptConnections();
    EXPECT_TRUE(socket->reconnect());
}

TEST_F(ComConnectionSocketConnecting, ReconnectWithASocketFailsAtOnceAndSilently)
{
    connectToService();
    EXPECT_FALSE(socket->reconnect());
    EXPECT_THAT(log, IsEmpty());
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocketConnecting, ReconnectUsesTheRememberedSettings)
{
    connectToService();
    socket->closeConnection();
    EXPECT_TRUE(socket->reconnect());
    EXPECT_TRUE(service.waitForConnections(2));
}

TEST_F(ComConnectionSocketConnecting, ReconnectBeforeAnyConnectionHasNoHost)
{
    EXPECT_FALSE(socket->reconnect());
    EXPECT_THAT(errors(), ElementsAreArray({"Host is empty"}));
}

TEST_F(ComConnectionSocketConnecting, ANewConnectionReplacesTheOldOne)
{
    connectToService();
    EXPECT_TRUE(socket->connectToServer(settings()));
    EXPECT_EQ(events, "info(127.0.0.1," + port() + ",127.0.0.1) disconnected connected ");
    EXPECT_TRUE(runUntil([&] { return service.disconnections() == 1; }));
    EXPECT_TRUE(runUntil([&] { return service.connections() == 2; }));
    EXPECT_TRUE(socket->isConnected());
}

// Disconnecting

TEST_F(ComConnectionSocketConnecting, ALostPeerIsReported)
{
    connectToService();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_THAT(log, ElementsAreArray(
                         {"CCS::LOG: >>>>>  DISCONNECTED from 127.0.0.1:" + port() + " 127.0.0.1 <<<<<"}));
    EXPECT_EQ(events, "info(127.0.0.1," + port() + ",127.0.0.1) disconnected ");
}

TEST_F(ComConnectionSocketConnecting, ReceivesTheLastFrameBeforeThePeerCloses)
{
    connectToService();
    service.sendRaw(frame(1, "farewell"));
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_THAT(payloads(), ElementsAreArray({"farewell"}));
}

TEST_F(ComConnectionSocketConnecting, CloseConnectionEndsTheConnection)
{
    connectToService();
    socket->closeConnection();
    EXPECT_FALSE(socket->isConnected());
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST_F(ComConnectionSocketConnecting, CloseConnectionIsReportedLikeALossWhenNothingIsLeftToWrite)
{
    connectToService();
    socket->closeConnection();
    EXPECT_EQ(events, "info(127.0.0.1," + port() + ",127.0.0.1) disconnected ");
}

TEST_F(ComConnectionSocketConnecting, CloseConnectionDoesNotWaitForAStalledPeer)
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

TEST_F(ComConnectionSocketConnecting, CloseConnectionWithoutAConnectionDoesNothing)
{
    socket->closeConnection();
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(events, "");
}

TEST_F(ComConnectionSocketConnecting, DestructionClosesTheConnection)
{
    connectToService();
    socket.reset();
    EXPECT_TRUE(service.waitForDisconnections(1));
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
