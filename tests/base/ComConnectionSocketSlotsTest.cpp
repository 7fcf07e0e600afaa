// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

#include <QPointer>

using support::runUntil;
using testing::ElementsAreArray;
using testing::IsEmpty;

using ComConnectionSocketSlots = ComConnectionSocketTest;

TEST_F(ComConnectionSocketSlots, TheReceiverMayCloseTheConnection)
{
    connectToService();
    onReceived = [&] { socket->closeConnection(); };
    service.sendRaw(frame(1, "a") + frame(2, "b") + frame(3, "c").left(30));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(socket->socket(), nullptr);
    EXPECT_TRUE(service.waitForDisconnections(1));
    EXPECT_TRUE(socket->reconnect());
}

TEST_F(ComConnectionSocketSlots, TheReceiverMayCloseAConnectionWithPendingBytes)
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

TEST_F(ComConnectionSocketSlots, TheReceiverMayReconnect)
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
    EXPECT_THAT(payloads(), ElementsAreArray({"a", "of the new one"}));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketSlots, TheReceiverMayConnectOverTheOldConnection)
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
    EXPECT_THAT(payloads(), ElementsAreArray({"a", "of the new one"}));
}

TEST_F(ComConnectionSocketSlots, TheReceiverMayDisposeOfTheObject)
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

TEST_F(ComConnectionSocketSlots, TheReceiverMaySendAnAnswer)
{
    connectToService();
    onReceived = [&] { EXPECT_TRUE(socket->sendSerializedData(nullptr, 2, 2)); };
    service.sendRaw(frame(1, "a") + frame(2, "b"));
    ASSERT_TRUE(waitForReceived(2));
    EXPECT_TRUE(service.waitForFrames(2));
}

TEST_F(ComConnectionSocketSlots, ASlotOfTheLossMayReconnect)
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

TEST_F(ComConnectionSocketSlots, ASlotOfTheLossMayCloseTheConnection)
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
