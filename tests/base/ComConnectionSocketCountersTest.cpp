// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ComConnectionSocketTest.h"

using support::QtMessages;
using testing::ElementsAreArray;
using testing::IsEmpty;

using ComConnectionSocketCounters = ComConnectionSocketTest;

// The numbers of received frames

TEST_F(ComConnectionSocketCounters, TheFirstFrameIsNumberedOne)
{
    connectToService();
    deliver(frame(1, "first") + frame(2, "second"));
    EXPECT_THAT(payloads(), ElementsAreArray({"first", "second"}));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketCounters, AFirstFrameNumberedThreeIsDroppedWithTwoErrors)
{
    connectToService();
    deliver(frame(3, "too early"));
    EXPECT_THAT(received, IsEmpty());
    EXPECT_THAT(log,
                ElementsAreArray(
                    {"CCS::DEBUG: CCS:REC. MSG # 3 <---",
                     "___ERROR___ CCS::LOG: Unexpected received message counter: 3. "
                     "Last received message counter was 0.",
                     "___ERROR___ CCS::LOG: Received invalid message counter. Ignoring received data."}));
}

TEST_F(ComConnectionSocketCounters, FramesAreDroppedUntilOneIsNumberedOne)
{
    connectToService();
    deliver(frame(3, "a") + frame(4, "b") + frame(2, "c"));
    EXPECT_THAT(received, IsEmpty());
    EXPECT_EQ(errors().size(), 6u);
    deliver(frame(1, "d") + frame(2, "e"));
    EXPECT_THAT(payloads(), ElementsAreArray({"d", "e"}));
    EXPECT_EQ(errors().size(), 6u);
}

TEST_F(ComConnectionSocketCounters, AFrameNumberedZeroIsDropped)
{
    connectToService();
    deliver(frame(0, "zero"));
    EXPECT_THAT(received, IsEmpty());
    EXPECT_THAT(errors(), ElementsAreArray({"Unexpected received message counter: 0. "
                                            "Last received message counter was 0.",
                                            "Received invalid message counter. Ignoring received data."}));
}

TEST_F(ComConnectionSocketCounters, AZeroAmongGoodFramesDropsAllUntilTheNextOne)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(0, "c") + frame(3, "d") + frame(1, "e"));
    EXPECT_THAT(payloads(), ElementsAreArray({"a", "b", "e"}));
}

TEST_F(ComConnectionSocketCounters, AGapIsReportedAndTheFrameIsStillEmitted)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(5, "c"));
    EXPECT_THAT(payloads(), ElementsAreArray({"a", "b", "c"}));
    EXPECT_THAT(errors(), ElementsAreArray({"Unexpected received message counter: 5. "
                                            "Last received message counter was 2."}));
}

TEST_F(ComConnectionSocketCounters, AfterFrameOneAnyNumberIsAcceptedSilently)
{
    connectToService();
    deliver(frame(1, "a") + frame(9, "b"));
    EXPECT_THAT(payloads(), ElementsAreArray({"a", "b"}));
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketCounters, APeerMayRestartItsNumberingSilently)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(3, "c") + frame(1, "d") + frame(2, "e"));
    EXPECT_EQ(received.size(), 5u);
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketCounters, ARepeatedNumberIsReported)
{
    connectToService();
    deliver(frame(1, "a") + frame(2, "b") + frame(2, "c"));
    EXPECT_EQ(received.size(), 3u);
    EXPECT_THAT(errors(), ElementsAreArray({"Unexpected received message counter: 2. "
                                            "Last received message counter was 2."}));
}

TEST_F(ComConnectionSocketCounters, NumbersAreComparedInTheirLow32Bits)
{
    connectToService();
    const QtMessages messages;
    sendJunk();
    deliver(frame(Q_UINT64_C(0xFFFFFFFF), "a") + frame(Q_UINT64_C(0x500000000), "b"));
    EXPECT_EQ(received.size(), 2u);
    EXPECT_THAT(errors(), IsEmpty());
}

// The update counters of received frames

TEST_F(ComConnectionSocketCounters, LostUpdateMessagesAreCounted)
{
    connectToService();
    deliver(frame(1, "a", 5) + frame(2, "b", 9));
    EXPECT_THAT(errors(), ElementsAreArray(
                              {"COMMUNICATION__ERROR::We lost 3 update messages",
                               "Stored update message counter: 5\n  Received update message counter: 9\n"}));
    EXPECT_EQ(received.size(), 2u);
}

TEST_F(ComConnectionSocketCounters, NoLossIsReportedAfterZeroOrForAnEqualOrSmallerOrTheNextCounter)
{
    connectToService();
    deliver(frame(1, "", 0) + frame(2, "", 9) + frame(3, "", 10) + frame(4, "", 10) + frame(5, "", 4) +
            frame(6, "", 0) + frame(7, "", 100));
    EXPECT_EQ(received.size(), 7u);
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(ComConnectionSocketCounters, ADroppedFrameStillCountsItsUpdates)
{
    connectToService();
    deliver(frame(3, "dropped", 5));
    log.clear();
    deliver(frame(1, "taken", 9));
    EXPECT_THAT(errors(), testing::Contains("COMMUNICATION__ERROR::We lost 3 update messages"));
}
