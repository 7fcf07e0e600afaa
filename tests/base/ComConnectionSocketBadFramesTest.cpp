// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

using support::QtMessages;
using testing::ElementsAreArray;
using testing::IsEmpty;

using ComConnectionSocketBadFrames = ComConnectionSocketTest;

TEST_F(ComConnectionSocketBadFrames, AWrongMagicIsReportedInSixDebugLinesAndOneError)
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
    EXPECT_THAT(log,
                ElementsAreArray({"___ERROR___ CCS::LOG: ___Network error detected - resetting buffers___"}));
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocketBadFrames, FewerBytesThanAPrefixAreNotJudged)
{
    connectToService();
    const QtMessages messages;
    deliver(junk.left(15));
    EXPECT_THAT(errors(), IsEmpty());
    deliver(junk.mid(15, 1));
    EXPECT_THAT(errors(), ElementsAreArray({"___Network error detected - resetting buffers___"}));
}

TEST_F(ComConnectionSocketBadFrames, AWrongMagicDropsTheRestOfTheBuffer)
{
    connectToService();
    const QtMessages messages;
    deliver(junk + frame(1, "lost with it"));
    EXPECT_THAT(received, IsEmpty());
    deliver(frame(2, "new start"));
    EXPECT_THAT(payloads(), ElementsAreArray({"new start"}));
}

TEST_F(ComConnectionSocketBadFrames, AWrongMagicKeepsTheFramesBeforeIt)
{
    connectToService();
    const QtMessages messages;
    deliver(frame(1, "kept") + junk + frame(2, "lost"));
    EXPECT_THAT(payloads(), ElementsAreArray({"kept"}));
    EXPECT_EQ(errors().size(), 1u);
}

TEST_F(ComConnectionSocketBadFrames, AfterAWrongMagicAnyNumberIsAcceptedOnce)
{
    connectToService();
    const QtMessages messages;
    sendJunk();
    deliver(frame(77, "any"));
    EXPECT_THAT(errors(), IsEmpty());
    deliver(frame(79, "not any"));
    EXPECT_THAT(errors(), ElementsAreArray({"Unexpected received message counter: 79. "
                                            "Last received message counter was 77."}));
    EXPECT_THAT(payloads(), ElementsAreArray({"any", "not any"}));
}

TEST_F(ComConnectionSocketBadFrames, AWrongMagicAlsoRestartsTheNumberingOfSentFrames)
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

TEST_F(ComConnectionSocketBadFrames, AWrongMagicForgetsTheReceivedUpdateCounter)
{
    connectToService();
    const QtMessages messages;
    deliver(frame(1, "", 5));
    sendJunk();
    deliver(frame(2, "", 9));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketBadFrames, AnImpossibleLengthIsHandledAsAWrongMagic)
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
        EXPECT_THAT(errors(), ElementsAreArray({"___Network error detected - resetting buffers___"}))
            << impossible;
        EXPECT_EQ(messages.all().size(), 6) << impossible;
        EXPECT_THAT(received, IsEmpty()) << impossible;
        deliver(frame(50, "accepted"));
        EXPECT_THAT(payloads(), ElementsAreArray({"accepted"})) << impossible;
    }
    EXPECT_TRUE(socket->isConnected());
}

TEST_F(ComConnectionSocketBadFrames, ALengthOf64MebibytesIsWaitedFor)
{
    connectToService();
    deliver(prefix("ABBA08154711F0070000000004000000"));
    deliver("the beginning of much more");
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_THAT(received, IsEmpty());
}

TEST_F(ComConnectionSocketBadFrames, ANewConnectionForgetsHalfAFrame)
{
    connectToService();
    deliver(frame(1, "never finished").left(45));
    socket->closeConnection();
    connectToService();
    deliver(frame(1, "whole"));
    EXPECT_THAT(payloads(), ElementsAreArray({"whole"}));
}
