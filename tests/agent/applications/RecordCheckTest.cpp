// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDataStream>
#include <QIODevice>

#include "agent/applications/RecordCheck.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

using agent::recordProblem;

namespace {

QByteArray encoded(const base::DbBaseType& record)
{
    QByteArray bytes;
    record.serialize(bytes);
    return bytes;
}

base::SnmpInt intRecord()
{
    base::SnmpInt record;
    record.oid = "127.3";
    record.value.setValue(5);
    return record;
}

base::SnmpString stringRecord()
{
    base::SnmpString record;
    record.oid = "127.3";
    record.value = "text";
    return record;
}

base::SnmpIntResponse intResponse()
{
    base::SnmpIntResponse record;
    record.varbind = intRecord();
    return record;
}

base::SnmpStringResponse stringResponse()
{
    base::SnmpStringResponse record;
    record.varbind = stringRecord();
    return record;
}

QByteArray bigEndian(qint32 value)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << value;
    return bytes;
}

QByteArray property(qint32 tag, const QByteArray& value)
{
    return bigEndian(tag) + bigEndian(value.size()) + value;
}

/// A text as it travels: a length and the bytes, which end in a zero byte if they are right.
QByteArray text(const QByteArray& bytes)
{
    return bigEndian(bytes.size()) + bytes;
}

const QByteArray storeType = property(0, bigEndian(0));

} // namespace

TEST(RecordCheck, WhatTheRecordsWriteIsRight)
{
    EXPECT_EQ(recordProblem(base::SnmpIntType, encoded(intRecord())), QString());
    EXPECT_EQ(recordProblem(base::SnmpIntType, encoded(base::SnmpInt())), QString());
    EXPECT_EQ(recordProblem(base::SnmpStringType, encoded(stringRecord())), QString());
    EXPECT_EQ(recordProblem(base::SnmpStringType, encoded(base::SnmpString())), QString());
    EXPECT_EQ(recordProblem(base::SnmpIntResponseType, encoded(intResponse())), QString());
    EXPECT_EQ(recordProblem(base::SnmpStringResponseType, encoded(stringResponse())), QString());
}

TEST(RecordCheck, NoRecordMayBeCutShortAnywhere)
{
    const std::pair<int, QByteArray> records[] = {{base::SnmpStringType, encoded(stringRecord())},
                                                  {base::SnmpIntResponseType, encoded(intResponse())},
                                                  {base::SnmpStringResponseType, encoded(stringResponse())}};
    for (const auto& [dataType, bytes] : records) {
        for (int size = 0; size < bytes.size(); ++size)
            EXPECT_FALSE(recordProblem(dataType, bytes.left(size)).isEmpty()) << dataType << ' ' << size;
    }
}

TEST(RecordCheck, AnIntegerRecordMayEndBeforeItsValueButNowhereElse)
{
    const QByteArray bytes = encoded(intRecord());
    const int withoutValue = bytes.size() - 12;
    for (int size = 0; size < bytes.size(); ++size)
        EXPECT_EQ(recordProblem(base::SnmpIntType, bytes.left(size)).isEmpty(), size == withoutValue) << size;
}

TEST(RecordCheck, UnknownPropertiesArePassedOver)
{
    const QByteArray extra = property(7, "whatever");
    EXPECT_EQ(recordProblem(base::SnmpIntType, encoded(intRecord()) + extra), QString());
    EXPECT_EQ(recordProblem(base::SnmpIntType, storeType + encoded(intRecord())), QString());
}

TEST(RecordCheck, PropertiesOutOfOrderAreRefused)
{
    const QByteArray oid = property(1, text(QByteArray("127.3\0", 6)));
    // Behind the unknown property the decoder would take the value for absent: an unset that nobody has sent.
    const QByteArray value = property(2, bigEndian(5));
    EXPECT_FALSE(recordProblem(base::SnmpIntType, storeType + oid + property(7, "") + value).isEmpty());
    EXPECT_FALSE(recordProblem(base::SnmpIntType, oid + storeType + value).isEmpty());
}

TEST(RecordCheck, ANegativeOrTooLongPropertyLengthIsRefused)
{
    for (const qint32 length : {-1, -8, 5, 2147483647}) {
        const QByteArray bytes = bigEndian(0) + bigEndian(length) + bigEndian(0);
        EXPECT_FALSE(recordProblem(base::SnmpIntType, bytes).isEmpty()) << length;
    }
}

TEST(RecordCheck, AnIntegerThatIsNotFourBytesLongIsRefused)
{
    const QByteArray oid = property(1, text(QByteArray("127.3\0", 6)));
    EXPECT_FALSE(
        recordProblem(base::SnmpIntType, storeType + oid + property(2, QByteArray(3, '\0'))).isEmpty());
    EXPECT_FALSE(
        recordProblem(base::SnmpIntType, storeType + oid + property(2, QByteArray(5, '\0'))).isEmpty());
}

TEST(RecordCheck, ATextMustEndWhereItsPropertyEnds)
{
    const auto problemWithOid = [](const QByteArray& oidValue) {
        return recordProblem(base::SnmpIntType, storeType + property(1, oidValue));
    };
    EXPECT_EQ(problemWithOid(text(QByteArray("127.3\0", 6))), QString());
    EXPECT_FALSE(problemWithOid(text("127.3")).isEmpty()) << "no zero byte";
    EXPECT_FALSE(problemWithOid(text(QByteArray("127\0.3\0", 7))).isEmpty()) << "a zero byte inside";
    EXPECT_FALSE(problemWithOid(bigEndian(4) + QByteArray("127.3\0", 6)).isEmpty()) << "length too small";
    EXPECT_FALSE(problemWithOid(bigEndian(60) + QByteArray("127.3\0", 6)).isEmpty()) << "length too large";
    EXPECT_FALSE(problemWithOid(bigEndian(-1) + QByteArray("127.3\0", 6)).isEmpty()) << "length negative";
    EXPECT_FALSE(problemWithOid("12").isEmpty()) << "no room for the length";
}

TEST(RecordCheck, ANestedRecordMustFillItsProperty)
{
    const QByteArray nested = encoded(intRecord());
    const auto problemWithNested = [](const QByteArray& value) {
        return recordProblem(base::SnmpIntResponseType,
                             storeType + property(1, value) + property(2, bigEndian(0)));
    };
    EXPECT_EQ(problemWithNested(bigEndian(nested.size()) + nested), QString());
    EXPECT_FALSE(problemWithNested(bigEndian(-1)).isEmpty());
    EXPECT_FALSE(problemWithNested(bigEndian(nested.size() + 1) + nested).isEmpty());
    EXPECT_FALSE(problemWithNested(bigEndian(nested.size() - 1) + nested).isEmpty());
}

TEST(RecordCheck, UnknownDataTypesAreRefused)
{
    for (const int dataType : {-1, 4, 32767})
        EXPECT_FALSE(recordProblem(dataType, encoded(intRecord())).isEmpty()) << dataType;
}

TEST(RecordCheck, ARecordOfCountlessPropertiesIsNotReadToItsEnd)
{
    QByteArray bytes = encoded(intRecord());
    for (int i = 0; i < 97; ++i)
        bytes += QByteArray::fromHex("0000000900000000");
    EXPECT_EQ(recordProblem(base::SnmpIntType, bytes), QString());
    bytes += QByteArray::fromHex("0000000900000000");
    EXPECT_FALSE(recordProblem(base::SnmpIntType, bytes).isEmpty());
}
