// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QtEndian>

#include "agent/applications/FrameSequence.h"

using agent::FrameSequence;
using base::FrameHeader;
using Result = agent::FrameSequence::Result;

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

TEST(FrameSequence, JoinsAFrameFromSingleBytes)
{
    FrameSequence sequence;
    base::Frame frame;
    const QByteArray bytes = frameBytes(1, "payload");
    for (int i = 0; i < bytes.size(); ++i) {
        ASSERT_EQ(sequence.next(frame), Result::Incomplete) << i;
        sequence.discardTaken();
        sequence.append(bytes.mid(i, 1));
    }
    ASSERT_EQ(sequence.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray("payload"));
    EXPECT_EQ(frame.header.dataType, 1);
    EXPECT_EQ(frame.header.clientCallbackId, 2);
}

TEST(FrameSequence, SplitsFramesReadTogether)
{
    FrameSequence sequence;
    base::Frame frame;
    sequence.append(frameBytes(1, "one") + frameBytes(2, "") + frameBytes(3, "three").left(20));
    ASSERT_EQ(sequence.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray("one"));
    ASSERT_EQ(sequence.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray());
    EXPECT_EQ(sequence.next(frame), Result::Incomplete);
    sequence.discardTaken();
    sequence.append(frameBytes(3, "three").mid(20));
    ASSERT_EQ(sequence.next(frame), Result::Complete);
    EXPECT_EQ(frame.payload, QByteArray("three"));
}

TEST(FrameSequence, AWrongMagicEndsTheStream)
{
    FrameSequence sequence;
    base::Frame frame;
    QByteArray bytes = frameBytes(1, "");
    bytes[0] = 'x';
    sequence.append(bytes);
    EXPECT_EQ(sequence.next(frame), Result::Malformed);
    EXPECT_TRUE(sequence.error());
    sequence.append(frameBytes(1, ""));
    EXPECT_EQ(sequence.next(frame), Result::Malformed);
}

TEST(FrameSequence, AnImpossibleLengthEndsTheStream)
{
    const qint64 lengths[] = {0, 25, -1, 64 * 1024 * 1024 + 1, Q_INT64_C(0x7fffffffffffffff)};
    for (const qint64 length : lengths) {
        FrameSequence sequence;
        base::Frame frame;
        sequence.append(prefix(length));
        EXPECT_EQ(sequence.next(frame), Result::Malformed) << length;
    }
    for (const qint64 length : {26, 64 * 1024 * 1024}) {
        FrameSequence sequence;
        base::Frame frame;
        sequence.append(prefix(length));
        EXPECT_EQ(sequence.next(frame), Result::Incomplete) << length;
    }
}

TEST(FrameSequence, TheFirstFrameHasTheNumberOne)
{
    for (const quint64 counter : {0u, 2u}) {
        FrameSequence sequence;
        base::Frame frame;
        sequence.append(frameBytes(counter, ""));
        EXPECT_EQ(sequence.next(frame), Result::Malformed) << counter;
    }
}

TEST(FrameSequence, AGapOrARepetitionInTheNumbersEndsTheStream)
{
    for (const quint64 counter : {1u, 3u}) {
        FrameSequence sequence;
        base::Frame frame;
        sequence.append(frameBytes(1, "") + frameBytes(counter, ""));
        EXPECT_EQ(sequence.next(frame), Result::Complete);
        EXPECT_EQ(sequence.next(frame), Result::Malformed) << counter;
    }
}

TEST(FrameSequence, AFrameBeyondTheLimitEndsTheStreamBeforeItsBytesArrive)
{
    FrameSequence sequence(100);
    base::Frame frame;
    sequence.append(frameBytes(1, QByteArray(74, 'x')));
    EXPECT_EQ(sequence.next(frame), Result::Complete);
    sequence.append(prefix(101));
    EXPECT_EQ(sequence.next(frame), Result::Malformed);
    EXPECT_TRUE(sequence.error().text().contains(QStringLiteral("--max-frame")));
}

TEST(FrameSequence, KnowsWhetherItIsInsideAFrame)
{
    FrameSequence sequence;
    base::Frame frame;
    const QByteArray bytes = frameBytes(1, "payload");
    EXPECT_FALSE(sequence.isInsideFrame());
    for (const int size : {1, 15, 16, 42, bytes.size() - 1}) {
        FrameSequence started;
        started.append(bytes.left(size));
        EXPECT_EQ(started.next(frame), Result::Incomplete);
        EXPECT_TRUE(started.isInsideFrame()) << size;
    }
    sequence.append(bytes);
    EXPECT_EQ(sequence.next(frame), Result::Complete);
    EXPECT_FALSE(sequence.isInsideFrame());
    EXPECT_EQ(sequence.count(), 1u);
}
