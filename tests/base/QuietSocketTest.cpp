// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/QuietSocket.h"

#include <gtest/gtest.h>

#include <QHostAddress>
#include <QTcpServer>

#include <memory>

#include "support/RunUntil.h"

namespace {

class QuietSocket : public testing::Test
{
protected:
    QuietSocket()
    {
        server.listen(QHostAddress::LocalHost);
        socket.connectToHost(server.serverAddress().toString(), server.serverPort());
        socket.waitForConnected();
        server.waitForNewConnection(30000);
        peer.reset(server.nextPendingConnection());
    }

    /// More than the system takes while the peer does not read. Buffers of a fixed size cannot grow later.
    void fill()
    {
        constexpr int bufferSize = 65536;
        socket.setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, bufferSize);
        peer->setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, bufferSize);
        peer->setReadBufferSize(1);
        while (socket.bytesToWrite() < 1000000)
            socket.write(QByteArray(1000000, 'x'));
    }

    QTcpServer server;
    base::QuietSocket socket;
    std::unique_ptr<QTcpSocket> peer;
};

TEST_F(QuietSocket, SendsAtOnce)
{
    socket.write("text");
    EXPECT_EQ(socket.bytesToWrite(), 0);
    EXPECT_TRUE(support::runUntil([&] { return peer->bytesAvailable() == 4; }));
    EXPECT_EQ(peer->readAll(), "text");
}

TEST_F(QuietSocket, SendsTheRestOnceThePeerReads)
{
    fill();
    qint64 received = 0;
    socket.write("end");
    peer->setReadBufferSize(0);
    QByteArray last;
    EXPECT_TRUE(support::runUntil([&] {
        const QByteArray bytes = peer->readAll();
        received += bytes.size();
        last = (last + bytes).right(3);
        return last == "end";
    }));
    EXPECT_EQ(received % 1000000, 3) << "each byte once";
    EXPECT_EQ(socket.bytesToWrite(), 0);
}

TEST_F(QuietSocket, GathersUntilItIsFlushed)
{
    socket.setGathering(true);
    socket.write("some ");
    socket.write("text");
    EXPECT_EQ(socket.bytesToWrite(), 9);
    EXPECT_FALSE(peer->waitForReadyRead(50));
    socket.flush();
    EXPECT_EQ(socket.bytesToWrite(), 0);
    EXPECT_TRUE(support::runUntil([&] { return peer->bytesAvailable() == 9; }));
    EXPECT_EQ(peer->readAll(), "some text");
}

TEST_F(QuietSocket, GathersNoMoreThanABurst)
{
    socket.setGathering(true);
    const QByteArray frame(1000, 'x');
    for (int i = 0; i < 100; ++i)
        socket.write(frame);
    EXPECT_LT(socket.bytesToWrite(), 64 * 1024);
    EXPECT_TRUE(support::runUntil([&] { return peer->bytesAvailable() >= 64 * 1024; }));
}

TEST_F(QuietSocket, ADisconnectSendsGatheredBytes)
{
    socket.setGathering(true);
    socket.write("text");
    socket.disconnectFromHost();
    EXPECT_TRUE(support::runUntil([&] { return peer->bytesAvailable() == 4; }));
    EXPECT_TRUE(support::runUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
}

TEST_F(QuietSocket, NoticesALostPeerWithGatheredBytes)
{
    socket.setGathering(true);
    socket.write("text");
    peer.reset();
    EXPECT_TRUE(support::runUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
}

TEST_F(QuietSocket, ADisconnectWaitsForPendingBytes)
{
    fill();
    socket.disconnectFromHost();
    EXPECT_EQ(socket.state(), QAbstractSocket::ClosingState);
    peer->setReadBufferSize(0);
    EXPECT_TRUE(support::runUntil([&] {
        peer->readAll();
        return socket.state() == QAbstractSocket::UnconnectedState;
    }));
}

TEST_F(QuietSocket, AnAbortDropsPendingBytes)
{
    fill();
    socket.abort();
    EXPECT_EQ(socket.state(), QAbstractSocket::UnconnectedState);
    EXPECT_EQ(socket.bytesToWrite(), 0);
}

TEST_F(QuietSocket, AWriteToALostPeerDisconnects)
{
    peer.reset();
    int disconnects = 0;
    QObject::connect(&socket, &QTcpSocket::disconnected, &socket, [&] { ++disconnects; });
    while (socket.state() == QAbstractSocket::ConnectedState)
        socket.write("x");
    EXPECT_EQ(disconnects, 1);
    EXPECT_EQ(socket.write("x"), -1);
}

} // namespace
