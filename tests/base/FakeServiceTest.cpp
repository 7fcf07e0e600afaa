// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/FakeService.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>

#include "support/Deadline.h"

using base::FrameHeader;
using support::FakeService;

// This program has no QCoreApplication, like some users of FakeService.

namespace {

QByteArray frame(quint64 counter, const QByteArray& payload)
{
    FrameHeader header;
    header.dataType = 1;
    header.messageCounter = counter;
    return header.toBytes(payload.size()) + payload;
}

class Peer
{
public:
    explicit Peer(const FakeService& service)
    {
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), service.port());
        m_connected = m_socket.waitForConnected(support::deadlineMs);
    }

    bool isConnected() const { return m_connected; }

    void send(const QByteArray& bytes)
    {
        m_socket.write(bytes);
        m_socket.waitForBytesWritten(support::deadlineMs);
    }

    QByteArray receive(int size)
    {
        while (m_socket.bytesAvailable() < size && m_socket.waitForReadyRead(support::deadlineMs)) {
        }
        return m_socket.readAll();
    }

    bool waitForTheEnd()
    {
        return m_socket.state() == QAbstractSocket::UnconnectedState ||
               m_socket.waitForDisconnected(support::deadlineMs);
    }

private:
    QTcpSocket m_socket;
    bool m_connected = false;
};

} // namespace

TEST(FakeService, WorksWithoutAnApplicationObject)
{
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    FakeService service;
    Peer peer(service);
    EXPECT_TRUE(peer.isConnected());
    EXPECT_TRUE(service.waitForConnections(1));
}

TEST(FakeService, RecordsFramesHoweverTheyArrive)
{
    FakeService service;
    Peer peer(service);
    peer.send(frame(1, "one") + frame(2, "two").left(20));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frameCount(), 1);
    peer.send(frame(2, "two").mid(20));
    ASSERT_TRUE(service.waitForFrames(2));
    const auto frames = service.frames();
    EXPECT_EQ(frames[0].payload, "one");
    EXPECT_EQ(frames[1].payload, "two");
    EXPECT_EQ(frames[1].header.messageCounter, 2u);
    EXPECT_EQ(frames[1].connection, 1);
    EXPECT_EQ(service.receivedBytes(), frame(1, "one") + frame(2, "two"));
    EXPECT_TRUE(service.waitForFrame([](const FakeService::Frame& one) { return one.payload == "two"; }));
}

TEST(FakeService, WaitingEndsAtTheDeadline)
{
    FakeService service;
    EXPECT_FALSE(service.waitForConnections(1, 1));
    EXPECT_FALSE(service.waitForFrames(1, 1));
}

TEST(FakeService, NumbersItsFramesFromOneOnEachConnection)
{
    FakeService service;
    for (int connection = 1; connection <= 2; ++connection) {
        Peer peer(service);
        ASSERT_TRUE(service.waitForConnections(connection));
        service.send(1, "a", 0);
        service.send(1, "b", 0);
        EXPECT_EQ(peer.receive(86), frame(1, "a") + frame(2, "b"));
    }
    EXPECT_TRUE(service.waitForDisconnections(2));
}

TEST(FakeService, LeavesBytesUnreadWhenTold)
{
    FakeService service;
    service.stopReading();
    Peer peer(service);
    ASSERT_TRUE(service.waitForConnections(1));
    peer.send(frame(1, "later"));
    EXPECT_FALSE(service.waitForFrames(1, 50));
    service.resumeReading();
    EXPECT_TRUE(service.waitForFrames(1));
}

TEST(FakeService, ClosesTheNewestConnection)
{
    FakeService service;
    Peer first(service);
    ASSERT_TRUE(service.waitForConnections(1));
    Peer second(service);
    ASSERT_TRUE(service.waitForConnections(2));
    service.closeConnection();
    EXPECT_TRUE(second.waitForTheEnd());
    first.send(frame(1, "still here"));
    EXPECT_TRUE(service.waitForFrames(1));
}

TEST(FakeService, ClosesAfterAsManyFramesAsTold)
{
    FakeService service;
    service.closeAfterFrames(2);
    Peer peer(service);
    peer.send(frame(1, "a"));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.disconnections(), 0);
    peer.send(frame(2, "b"));
    EXPECT_TRUE(peer.waitForTheEnd());
    EXPECT_TRUE(service.waitForDisconnections(1));
}

TEST(FakeService, RefusesConnectionsUntilTheyAreAcceptedAgain)
{
    FakeService service;
    Peer before(service);
    ASSERT_TRUE(service.waitForConnections(1));
    service.refuseConnections();
    EXPECT_FALSE(Peer(service).isConnected());
    before.send(frame(1, "still here"));
    EXPECT_TRUE(service.waitForFrames(1));
    service.acceptConnections();
    EXPECT_TRUE(Peer(service).isConnected());
}

TEST(FakeService, KeepsItsPortWhileItRefuses)
{
    FakeService service;
    service.refuseConnections();
    QTcpServer thief;
    EXPECT_FALSE(thief.listen(QHostAddress::LocalHost, service.port()));
}
