// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

using base::FrameHeader;
using support::runUntil;
using testing::ElementsAreArray;
using testing::IsEmpty;

using ComConnectionSocketReceiving = ComConnectionSocketTest;

TEST_F(ComConnectionSocketReceiving, EmitsEachReceivedFrame)
{
    connectToService();
    service.send(1, "abc", 2);
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].dataType, 1);
    EXPECT_EQ(received[0].payload, "abc");
    EXPECT_EQ(received[0].callbackId, 2);
    EXPECT_THAT(log, ElementsAreArray({"CCS::DEBUG: CCS:REC. MSG # 1 <---",
                                       "CCS::DEBUG: CCS: Raw data received.Type: 1  - Length: 3"}));
}

TEST_F(ComConnectionSocketReceiving, AnEmptyPayloadIsEmittedToo)
{
    connectToService();
    service.send(0, "", 0);
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].payload, "");
    EXPECT_TRUE(logHas("CCS::DEBUG: CCS: Raw data received.Type: 0  - Length: 0"));
}

TEST_F(ComConnectionSocketReceiving, NegativeHeaderFieldsKeepTheirSign)
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

TEST_F(ComConnectionSocketReceiving, AFrameInPiecesIsAssembledOnce)
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
    EXPECT_THAT(payloads(), ElementsAreArray({"in pieces"}));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketReceiving, AFrameByteByByteIsAssembledOnce)
{
    connectToService();
    for (const char byte : frame(1, "slow") + frame(2, "slower"))
        deliver(QByteArray(1, byte));
    EXPECT_THAT(payloads(), ElementsAreArray({"slow", "slower"}));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketReceiving, TwoFramesInOneReadAreEmittedInOnePass)
{
    connectToService();
    int reads = 0;
    std::vector<int> readOfFrame;
    onReceived = [&] { readOfFrame.push_back(reads); };
    QObject::connect(socket->socket(), &QTcpSocket::readyRead, socket.get(), [&] { ++reads; });
    service.sendRaw(frame(1, "first") + frame(2, "second"));
    ASSERT_TRUE(waitForReceived(2));
    EXPECT_THAT(payloads(), ElementsAreArray({"first", "second"}));
    EXPECT_EQ(readOfFrame[0], readOfFrame[1]);
}

TEST_F(ComConnectionSocketReceiving, AFrameAndAHalfInOneReadAreBothAssembled)
{
    connectToService();
    const QByteArray second = frame(2, "second");
    for (const int cut : {10, 16, 30, 44}) {
        received.clear();
        deliver(frame(1, "first") + second.left(cut));
        EXPECT_THAT(payloads(), ElementsAreArray({"first"})) << cut;
        deliver(second.mid(cut));
        EXPECT_THAT(payloads(), ElementsAreArray({"first", "second"})) << cut;
    }
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketReceiving, ABurstOfFramesArrivesInOrder)
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

TEST_F(ComConnectionSocketReceiving, ALargeFrameIsReceivedWhole)
{
    connectToService();
    const QByteArray large(8000000, 'y');
    service.sendRaw(frame(1, large));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_EQ(received[0].payload, large.toStdString());
}

TEST_F(ComConnectionSocketReceiving, AnIdleConnectionIsPolledAboutEverySecond)
{
    connectToService();
    QObject::disconnect(socket->socket(), SIGNAL(readyRead()), socket.get(), SLOT(slot_readyRead()));
    service.sendRaw(frame(1, "unannounced"));
    ASSERT_TRUE(waitForReceived(1));
    EXPECT_THAT(payloads(), ElementsAreArray({"unannounced"}));
}

TEST_F(ComConnectionSocketReceiving, ReceivingRestartsThePollTimer)
{
    connectToService();
    const auto* timer = socket->findChild<QTimer*>();
    ASSERT_NE(timer, nullptr);
    EXPECT_EQ(timer->interval(), 1000);
    int before = 0;
    ASSERT_TRUE(support::askUntil([&] { return (before = timer->remainingTime()) < 600; }));
    QElapsedTimer clock;
    clock.start();
    deliver("x");
    const int after = timer->remainingTime();
    EXPECT_GT(clock.elapsed() + after, before + 200) << "it comes due later";
}

TEST_F(ComConnectionSocketReceiving, WithoutAConnectionThePollTimerStops)
{
    const auto* timer = socket->findChild<QTimer*>();
    EXPECT_FALSE(timer->isActive());
    connectToService();
    EXPECT_TRUE(timer->isActive());
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_FALSE(timer->isActive());
}
