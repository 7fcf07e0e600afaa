// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QtEndian>

#include <limits>

#include "base/wire/FrameHeader.h"

using base::FrameHeader;

namespace {

FrameHeader exampleHeader()
{
    FrameHeader header;
    header.dataType = 3;
    header.clientCallbackId = 2;
    header.messageCounter = 0x0102030405060708;
    header.updateMessageCounter = 0x1112131415161718;
    return header;
}

QByteArray prefix(quint64 magic, quint64 length)
{
    QByteArray bytes(FrameHeader::prefixSize, '\0');
    qToBigEndian(magic, bytes.data());
    qToBigEndian(length, bytes.data() + 8);
    return bytes;
}

FrameHeader::Prefix judged(quint64 length)
{
    quint64 read = 0;
    return FrameHeader::readPrefix(prefix(FrameHeader::magic, length), read);
}

} // namespace

TEST(FrameHeader, EveryFieldStandsAtItsOffsetBigEndian)
{
    const QByteArray expected = QByteArray::fromHex("ABBA08154711F007" // magic
                                                    "0000000000000042" // length: 26 and 40
                                                    "0003"             // data type
                                                    "0000000000000002" // callback id
                                                    "0102030405060708" // message counter
                                                    "1112131415161718" // update message counter
    );
    ASSERT_EQ(expected.size(), 42);
    EXPECT_EQ(exampleHeader().toBytes(40), expected);
}

TEST(FrameHeader, APayloadOfNoBytesGivesALengthOf26)
{
    quint64 length = 0;
    const QByteArray bytes = FrameHeader().toBytes(0);
    ASSERT_EQ(bytes.size(), 42);
    EXPECT_EQ(FrameHeader::readPrefix(bytes.left(16), length), FrameHeader::Prefix::Good);
    EXPECT_EQ(length, 26u);
}

TEST(FrameHeader, TheLengthCountsTheBytesAfterThePrefix)
{
    quint64 length = 0;
    FrameHeader::readPrefix(FrameHeader().toBytes(1000).left(16), length);
    EXPECT_EQ(length, 1026u);
}

TEST(FrameHeader, NegativeFieldsAreSignExtended)
{
    FrameHeader header;
    header.dataType = -1;
    header.clientCallbackId = -2;
    const QByteArray bytes = header.toBytes(0);
    EXPECT_EQ(bytes.mid(16, 2), QByteArray::fromHex("FFFF"));
    EXPECT_EQ(bytes.mid(18, 8), QByteArray::fromHex("FFFFFFFFFFFFFFFE"));
}

TEST(FrameHeader, TheRemainderIsReadBackAsItWasWritten)
{
    const FrameHeader read = FrameHeader::readRemainder(exampleHeader().toBytes(40).mid(16, 26));
    EXPECT_EQ(read.dataType, 3);
    EXPECT_EQ(read.clientCallbackId, 2);
    EXPECT_EQ(read.messageCounter, 0x0102030405060708u);
    EXPECT_EQ(read.updateMessageCounter, 0x1112131415161718u);
}

TEST(FrameHeader, NegativeFieldsAreReadBackNegative)
{
    FrameHeader header;
    header.dataType = -5;
    header.clientCallbackId = -7;
    const FrameHeader read = FrameHeader::readRemainder(header.toBytes(0).mid(16, 26));
    EXPECT_EQ(read.dataType, -5);
    EXPECT_EQ(read.clientCallbackId, -7);
}

TEST(FrameHeader, AnyOtherMagicIsBad)
{
    quint64 length = 0;
    const quint64 wrongByteOrder = qbswap(FrameHeader::magic);
    for (const quint64 magic : {Q_UINT64_C(0), FrameHeader::magic + 1, wrongByteOrder})
        EXPECT_EQ(FrameHeader::readPrefix(prefix(magic, 26), length), FrameHeader::Prefix::BadMagic);
}

TEST(FrameHeader, TheMagicIsJudgedBeforeTheLength)
{
    quint64 length = 0;
    EXPECT_EQ(FrameHeader::readPrefix(prefix(1, 0), length), FrameHeader::Prefix::BadMagic);
}

TEST(FrameHeader, ALengthBelow26IsBad)
{
    EXPECT_EQ(judged(26), FrameHeader::Prefix::Good);
    EXPECT_EQ(judged(25), FrameHeader::Prefix::BadLength);
    EXPECT_EQ(judged(0), FrameHeader::Prefix::BadLength);
}

TEST(FrameHeader, ALengthAbove64MebibytesIsBad)
{
    EXPECT_EQ(judged(67108864), FrameHeader::Prefix::Good);
    EXPECT_EQ(judged(67108865), FrameHeader::Prefix::BadLength);
    EXPECT_EQ(judged((std::numeric_limits<quint64>::max)()), FrameHeader::Prefix::BadLength);
    EXPECT_EQ(judged(Q_UINT64_C(0x100000000) + 26), FrameHeader::Prefix::BadLength);
}

TEST(FrameHeader, APrefixCutShortIsBad)
{
    quint64 length = 0;
    EXPECT_EQ(FrameHeader::readPrefix(prefix(FrameHeader::magic, 26).left(7), length),
              FrameHeader::Prefix::BadMagic);
    EXPECT_EQ(FrameHeader::readPrefix(prefix(FrameHeader::magic, 26).left(8), length),
              FrameHeader::Prefix::BadLength);
    EXPECT_EQ(FrameHeader::readPrefix(QByteArray(), length), FrameHeader::Prefix::BadMagic);
}
