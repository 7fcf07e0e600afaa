// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QtEndian>

#include "agent/applications/FrameAssembler.h"

using agent::FrameAssembler;
using base::FrameHeader;
using Result = agent::FrameAssembler::Result;

namespace {

QByteArray frameBytes(quint64 counter, const QByteArray& payload)
{
    FrameHeader header;
    header.dataType = 1;
    header.clientCallbackId = 2;
    header.messageCounter = counter;
    return header.toBytes(payload.size()) + payload;
}

/// Only the magic and the length.
QByteArray prefix(qint64 length)
{
    QByteArray bytes = frameBytes(1, QByteArray()).left(FrameHeader::prefixSize);
    qToBigEndian<qint64>(length, bytes.data() + 8);
    return bytes;
}

} // namespace

TEST(FrameAssembler, AFrameThatArrivesByteByByteIsAssembled)
{
    FrameAssembler assembler;
    FrameAssembler::Frame frame;
    const QByteArray bytes = frameBytes(1, "payload");
    for (int i = 0; i < bytes.size(); ++i) {
        ASSERT_EQ(assembler.next(frame), Result::Incomplete) << i;
        assembler.discardTaken();
        assembler.append(bytes.mid(i, 1));
    }
    ASSERT_EQ(assembler.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray("payload"));
    EXPECT_EQ(frame.header.dataType, 1);
    EXPECT_EQ(frame.header.clientCallbackId, 2);
}

TEST(FrameAssembler, SeveralFramesInOnePieceComeOneByOne)
{
    FrameAssembler assembler;
    FrameAssembler::Frame frame;
    assembler.append(frameBytes(1, "one") + frameBytes(2, "") + frameBytes(3, "three").left(20));
    ASSERT_EQ(assembler.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray("one"));
    ASSERT_EQ(assembler.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray());
    EXPECT_EQ(assembler.next(frame), Result::Incomplete);
    assembler.discardTaken();
    assembler.append(frameBytes(3, "three").mid(20));
    ASSERT_EQ(assembler.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray("three"));
}

TEST(FrameAssembler, AWrongMagicEndsTheStream)
{
    FrameAssembler assembler;
    FrameAssembler::Frame frame;
    QByteArray bytes = frameBytes(1, "");
    bytes[0] = 'x';
    assembler.append(bytes);
    EXPECT_EQ(assembler.next(frame), Result::Malformed);
    EXPECT_FALSE(assembler.problem().isEmpty());
    assembler.append(frameBytes(1, ""));
    EXPECT_EQ(assembler.next(frame), Result::Malformed);
}

TEST(FrameAssembler, ALengthThatNoFrameHasEndsTheStream)
{
    const qint64 lengths[] = {0, 25, -1, 64 * 1024 * 1024 + 1, Q_INT64_C(0x7fffffffffffffff)};
    for (const qint64 length : lengths) {
        FrameAssembler assembler;
        FrameAssembler::Frame frame;
        assembler.append(prefix(length));
        EXPECT_EQ(assembler.next(frame), Result::Malformed) << length;
    }
    for (const qint64 length : {26, 64 * 1024 * 1024}) {
        FrameAssembler assembler;
        FrameAssembler::Frame frame;
        assembler.append(prefix(length));
        EXPECT_EQ(assembler.next(frame), Result::Incomplete) << length;
    }
}

TEST(FrameAssembler, TheFirstFrameHasTheNumberOne)
{
    for (const quint64 counter : {0u, 2u}) {
        FrameAssembler assembler;
        FrameAssembler::Frame frame;
        assembler.append(frameBytes(counter, ""));
        EXPECT_EQ(assembler.next(frame), Result::Malformed) << counter;
    }
}

TEST(FrameAssembler, AGapOrARepetitionInTheNumbersEndsTheStream)
{
    for (const quint64 counter : {1u, 3u}) {
        FrameAssembler assembler;
        FrameAssembler::Frame frame;
        assembler.append(frameBytes(1, "") + frameBytes(counter, ""));
        EXPECT_EQ(assembler.next(frame), Result::Complete);
        EXPECT_EQ(assembler.next(frame), Result::Malformed) << counter;
    }
}

TEST(FrameAssembler, AFrameBeyondTheLimitEndsTheStreamBeforeItsBytesCome)
{
    FrameAssembler assembler(100);
    FrameAssembler::Frame frame;
    assembler.append(frameBytes(1, QByteArray(74, 'x')));
    EXPECT_EQ(assembler.next(frame), Result::Complete);
    assembler.append(prefix(101));
    EXPECT_EQ(assembler.next(frame), Result::Malformed);
    EXPECT_TRUE(assembler.problem().contains(QStringLiteral("--max-frame")));
}

TEST(FrameAssembler, KnowsWhetherTheRestOfAFrameIsStillToCome)
{
    FrameAssembler assembler;
    FrameAssembler::Frame frame;
    const QByteArray bytes = frameBytes(1, "payload");
    EXPECT_FALSE(assembler.isInsideFrame());
    for (const int size : {1, 15, 16, 42, bytes.size() - 1}) {
        FrameAssembler begun;
        begun.append(bytes.left(size));
        EXPECT_EQ(begun.next(frame), Result::Incomplete);
        EXPECT_TRUE(begun.isInsideFrame()) << size;
    }
    assembler.append(bytes);
    EXPECT_EQ(assembler.next(frame), Result::Complete);
    EXPECT_FALSE(assembler.isInsideFrame());
    EXPECT_EQ(assembler.count(), 1u);
}
