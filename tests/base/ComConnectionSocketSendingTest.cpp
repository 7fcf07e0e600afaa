// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

#include "support/MatchesPattern.h"

using support::MatchesPattern;
using support::QtMessages;
using support::runUntil;
using testing::ElementsAreArray;

using ComConnectionSocketSending = ComConnectionSocketTest;

TEST_F(ComConnectionSocketSending, AFrameIsTheHeaderAndTheRecord)
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

TEST_F(ComConnectionSocketSending, FramesAreNumberedFromOne)
{
    connectToService();
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(3));
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(service.frames()[i].header.messageCounter, i + 1);
}

TEST_F(ComConnectionSocketSending, NumbersFramesFromOneOnEachConnection)
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

TEST_F(ComConnectionSocketSending, ANewConnectionForgetsTheUpdateCounterToSend)
{
    connectToService();
    socket->slot_setSendUpdateMessageCounter(5);
    socket->closeConnection();
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].header.updateMessageCounter, 0u);
}

TEST_F(ComConnectionSocketSending, ANullRecordGivesAnEmptyPayload)
{
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 3, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.receivedBytes().size(), 42);
    EXPECT_EQ(service.receivedBytes().mid(8, 8).toHex(), "000000000000001a");
    EXPECT_EQ(service.frames()[0].header.dataType, 3);
}

TEST_F(ComConnectionSocketSending, ANegativeCallbackIdIsSignExtended)
{
    connectToService();
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, -2));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].header.clientCallbackId, -2);
}

TEST_F(ComConnectionSocketSending, SendingIsLoggedInTwoDebugLines)
{
    connectToService();
    socket->sendSerializedData(nullptr, 3, 0);
    EXPECT_THAT(log, ElementsAreArray({"CCS::DEBUG: Send serialized data to server. Type: 3",
                                       "CCS::DEBUG: CCS:SEND MSG # 1 --->"}));
}

TEST_F(ComConnectionSocketSending, APayloadCanBeSentWithoutARecord)
{
    connectToService();
    socket->slot_sendSerializedData("raw", 2, 7);
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].payload, "raw");
    EXPECT_EQ(service.frames()[0].header.dataType, 2);
    EXPECT_EQ(service.frames()[0].header.clientCallbackId, 7);
}

TEST_F(ComConnectionSocketSending, ALargeRecordArrivesWhole)
{
    connectToService();
    const base::SnmpString large = textOfSize(5000000);
    EXPECT_TRUE(socket->sendSerializedData(&large, 1, 0));
    ASSERT_TRUE(runUntil([&] { return service.frameCount() == 1; }));
    EXPECT_EQ(base::SnmpString(service.frames()[0].payload).value, large.value);
}

TEST_F(ComConnectionSocketSending, SendingWithoutASocketReconnectsFirst)
{
    connectToService();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(1));
    EXPECT_EQ(service.frames()[0].connection, 2);
    EXPECT_EQ(service.frames()[0].header.messageCounter, 1u);
}

TEST_F(ComConnectionSocketSending, SendingWithoutASocketFailsWhenTheServiceIsGone)
{
    connectToService();
    service.refuseConnections();
    service.closeConnection();
    ASSERT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    const QtMessages messages;
    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_EQ(errors().back(), "slot_sendSerializedData::cannot reconnect");
}

TEST_F(ComConnectionSocketSending, SendingBeforeAnyConnectionCannotReconnect)
{
    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_THAT(errors(), ElementsAreArray({"Host is empty", "slot_sendSerializedData::cannot reconnect"}));
    EXPECT_FALSE(logHas("CCS::DEBUG: CCS:SEND MSG # 1 --->"));
}

TEST_F(ComConnectionSocketSending, AFrameForAClosingConnectionIsDroppedButUsesItsNumber)
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

TEST_F(ComConnectionSocketSending, ABacklogAboveTheLimitRefusesTheRecordAndUsesNoNumber)
{
    connectToService();
    service.stopReading();
    socket->setMaxPendingBytes(1000);
    const base::SnmpString large = textOfSize(20000000);
    ASSERT_TRUE(socket->sendSerializedData(&large, 1, 0));
    ASSERT_GT(socket->socket()->bytesToWrite(), 1000);

    log.clear();
    EXPECT_FALSE(socket->sendSerializedData(nullptr, 0, 0));
    EXPECT_THAT(log, ElementsAreArray({"CCS::DEBUG: Send serialized data to server. Type: 0"}));
    EXPECT_TRUE(socket->isConnected());

    service.resumeReading();
    ASSERT_TRUE(runUntil([&] { return socket->socket()->bytesToWrite() == 0; }));
    EXPECT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_TRUE(service.waitForFrames(2));
    EXPECT_EQ(service.frames()[1].header.messageCounter, 2u);
}

TEST_F(ComConnectionSocketSending, ABacklogIsFlushedBeforeASendIsRejected)
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

TEST_F(ComConnectionSocketSending, TheDefaultBacklogLimitIsTenMillionBytes)
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

TEST_F(ComConnectionSocketSending, EveryTenThousandthFrameOfTheProcessIsReported)
{
    connectToService();
    const QtMessages messages;
    for (int i = 0; i < 10000; ++i)
        ASSERT_TRUE(socket->sendSerializedData(nullptr, 0, 0));
    ASSERT_EQ(messages.all().size(), 1);
    EXPECT_THAT(messages.all()[0].toStdString(), MatchesPattern("Overall data sent \\( x10000 \\) [1-9]"));
}

TEST_F(ComConnectionSocketSending, APeerLostDuringALongWriteEndsTheWrite)
{
    connectToService();
    service.closeAfterFrames(1);
    const base::SnmpString large = textOfSize(3000000);
    for (int i = 0; i < 20 && socket->isConnected(); ++i)
        socket->sendSerializedData(&large, 1, 0);
    EXPECT_TRUE(runUntil([&] { return !socket->isConnected(); }));
    EXPECT_TRUE(logHas("CCS::LOG: >>>>>  DISCONNECTED from 127.0.0.1:" + port() + " 127.0.0.1 <<<<<"));
}
