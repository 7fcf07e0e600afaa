// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/FrameCutter.h"

#include <gtest/gtest.h>

using base::FrameCutter;
using base::FrameHeader;
using Status = FrameCutter::Status;

namespace {

QByteArray frameBytes(quint64 counter, const QByteArray& payload)
{
    FrameHeader header;
    header.dataType = 1;
    header.clientCallbackId = 2;
    header.messageCounter = counter;
    header.updateMessageCounter = 7;
    return header.toBytes(payload.size()) + payload;
}

} // namespace

TEST(FrameCutter, JoinsAFrameFromSingleBytes)
{
    FrameCutter cutter;
    const QByteArray bytes = frameBytes(9, "payload");
    for (int i = 0; i < bytes.size(); ++i) {
        ASSERT_EQ(cutter.look(), Status::Incomplete) << i;
        cutter.discardTaken();
        cutter.append(bytes.mid(i, 1));
    }
    ASSERT_EQ(cutter.look(), Status::Complete);
    const base::Frame frame = cutter.take();
    EXPECT_EQ(frame.payload, QByteArray("payload"));
    EXPECT_EQ(frame.header.dataType, 1);
    EXPECT_EQ(frame.header.clientCallbackId, 2);
    EXPECT_EQ(frame.header.messageCounter, 9u);
    EXPECT_EQ(frame.header.updateMessageCounter, 7u);
}

TEST(FrameCutter, SplitsFramesReadTogether)
{
    FrameCutter cutter;
    cutter.append(frameBytes(1, "one") + frameBytes(2, "") + frameBytes(3, "three").left(20));
    ASSERT_EQ(cutter.look(), Status::Complete);
    EXPECT_EQ(cutter.take().payload, QByteArray("one"));
    ASSERT_EQ(cutter.look(), Status::Complete);
    EXPECT_EQ(cutter.take().payload, QByteArray());
    ASSERT_EQ(cutter.look(), Status::Incomplete);
    cutter.discardTaken();
    cutter.append(frameBytes(3, "three").mid(20));
    ASSERT_EQ(cutter.look(), Status::Complete);
    EXPECT_EQ(cutter.take().payload, QByteArray("three"));
}

TEST(FrameCutter, LookingTwiceReadsThePrefixOnce)
{
    FrameCutter cutter;
    cutter.append(frameBytes(1, "one").left(FrameHeader::prefixSize));
    EXPECT_EQ(cutter.look(), Status::Incomplete);
    EXPECT_EQ(cutter.look(), Status::Incomplete);
    cutter.append(frameBytes(1, "one").mid(FrameHeader::prefixSize));
    EXPECT_EQ(cutter.look(), Status::Complete);
    EXPECT_EQ(cutter.look(), Status::Complete);
    EXPECT_EQ(cutter.take().payload, QByteArray("one"));
}

TEST(FrameCutter, KnowsTheLengthOnceThePrefixHasArrived)
{
    FrameCutter cutter;
    const QByteArray bytes = frameBytes(1, "payload");
    cutter.append(bytes.left(FrameHeader::prefixSize - 1));
    cutter.look();
    EXPECT_EQ(cutter.length(), 0u);
    cutter.append(bytes.mid(FrameHeader::prefixSize - 1, 1));
    cutter.look();
    EXPECT_EQ(cutter.length(), 33u);
    cutter.append(bytes.mid(FrameHeader::prefixSize));
    cutter.look();
    cutter.take();
    EXPECT_EQ(cutter.length(), 0u);
}

TEST(FrameCutter, TellsABadMagicFromABadLength)
{
    FrameCutter wrongMagic;
    wrongMagic.append("sixteen bytes...");
    EXPECT_EQ(wrongMagic.look(), Status::BadMagic);

    FrameCutter wrongLength;
    wrongLength.append(QByteArray::fromHex("ABBA08154711F0070000000000000019"));
    EXPECT_EQ(wrongLength.look(), Status::BadLength);
    EXPECT_EQ(wrongLength.length(), 25u);
}

TEST(FrameCutter, StartsAgainAfterClear)
{
    FrameCutter cutter;
    cutter.append("sixteen bytes... and more");
    ASSERT_EQ(cutter.look(), Status::BadMagic);
    cutter.clear();
    EXPECT_FALSE(cutter.isInsideFrame());
    cutter.append(frameBytes(1, "payload"));
    ASSERT_EQ(cutter.look(), Status::Complete);
    EXPECT_EQ(cutter.take().payload, QByteArray("payload"));
}

TEST(FrameCutter, IsInsideAFrameUntilItsLastByte)
{
    const QByteArray bytes = frameBytes(1, "payload");
    FrameCutter cutter;
    EXPECT_FALSE(cutter.isInsideFrame());
    for (int i = 0; i < bytes.size(); ++i) {
        cutter.append(bytes.mid(i, 1));
        cutter.look();
        EXPECT_TRUE(cutter.isInsideFrame()) << i;
    }
    cutter.take();
    EXPECT_FALSE(cutter.isInsideFrame());
}
