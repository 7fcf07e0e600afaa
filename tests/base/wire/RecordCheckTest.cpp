// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/RecordCheck.h"

#include <gtest/gtest.h>

#include <QDataStream>
#include <QIODevice>

#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"
#include "support/EncodedRecord.h"

using base::recordProblem;
using support::encoded;

namespace {

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

/// A text on the wire: its length and its bytes. A sound one ends in a zero byte.
QByteArray text(const QByteArray& bytes)
{
    return bigEndian(bytes.size()) + bytes;
}

const QByteArray storeTypeProperty = property(0, bigEndian(0));

} // namespace

TEST(RecordCheck, AcceptsAllRecordsAsWritten)
{
    EXPECT_EQ(recordProblem(base::SnmpIntType, encoded(intRecord())), std::nullopt);
    EXPECT_EQ(recordProblem(base::SnmpIntType, encoded(base::SnmpInt())), std::nullopt);
    EXPECT_EQ(recordProblem(base::SnmpStringType, encoded(stringRecord())), std::nullopt);
    EXPECT_EQ(recordProblem(base::SnmpStringType, encoded(base::SnmpString())), std::nullopt);
    EXPECT_EQ(recordProblem(base::SnmpIntResponseType, encoded(intResponse())), std::nullopt);
    EXPECT_EQ(recordProblem(base::SnmpStringResponseType, encoded(stringResponse())), std::nullopt);
}

TEST(RecordCheck, ARecordMustNotEndEarly)
{
    const std::pair<int, QByteArray> records[] = {{base::SnmpStringType, encoded(stringRecord())},
                                                  {base::SnmpIntResponseType, encoded(intResponse())},
                                                  {base::SnmpStringResponseType, encoded(stringResponse())}};
    for (const auto& [dataType, bytes] : records) {
        for (int size = 0; size < bytes.size(); ++size)
            EXPECT_TRUE(recordProblem(dataType, bytes.left(size))) << dataType << ' ' << size;
    }
}

TEST(RecordCheck, AnIntegerRecordMayEndOnlyBeforeItsValue)
{
    const QByteArray bytes = encoded(intRecord());
    const int withoutValue = bytes.size() - 12;
    for (int size = 0; size < bytes.size(); ++size)
        EXPECT_EQ(recordProblem(base::SnmpIntType, bytes.left(size)).has_value(), size != withoutValue)
            << size;
}

TEST(RecordCheck, SkipsUnknownProperties)
{
    const QByteArray extra = property(7, "whatever");
    EXPECT_EQ(recordProblem(base::SnmpIntType, encoded(intRecord()) + extra), std::nullopt);
    EXPECT_EQ(recordProblem(base::SnmpIntType, storeTypeProperty + encoded(intRecord())), std::nullopt);
}

TEST(RecordCheck, PropertiesOutOfOrderAreRejected)
{
    const QByteArray oid = property(1, text(QByteArray("127.3\0", 6)));
    // After the unknown property the decoder would take the value for absent, and the record for an unset.
    const QByteArray value = property(2, bigEndian(5));
    EXPECT_TRUE(recordProblem(base::SnmpIntType, storeTypeProperty + oid + property(7, "") + value));
    EXPECT_TRUE(recordProblem(base::SnmpIntType, oid + storeTypeProperty + value));
}

TEST(RecordCheck, ANegativeOrTooLongPropertyLengthIsRejected)
{
    for (const qint32 length : {-1, -8, 5, 2147483647}) {
        const QByteArray bytes = bigEndian(0) + bigEndian(length) + bigEndian(0);
        EXPECT_TRUE(recordProblem(base::SnmpIntType, bytes)) << length;
    }
}

TEST(RecordCheck, AnIntegerMustBeFourBytesLong)
{
    const QByteArray oid = property(1, text(QByteArray("127.3\0", 6)));
    EXPECT_TRUE(recordProblem(base::SnmpIntType, storeTypeProperty + oid + property(2, QByteArray(3, '\0'))));
    EXPECT_TRUE(recordProblem(base::SnmpIntType, storeTypeProperty + oid + property(2, QByteArray(5, '\0'))));
}

TEST(RecordCheck, ATextMustEndWhereItsPropertyEnds)
{
    const auto problemWithOid = [](const QByteArray& oidValue) {
        return recordProblem(base::SnmpIntType, storeTypeProperty + property(1, oidValue));
    };
    EXPECT_EQ(problemWithOid(text(QByteArray("127.3\0", 6))), std::nullopt);
    EXPECT_TRUE(problemWithOid(text("127.3"))) << "no zero byte";
    EXPECT_TRUE(problemWithOid(text(QByteArray("127\0.3\0", 7)))) << "a zero byte inside";
    EXPECT_TRUE(problemWithOid(bigEndian(4) + QByteArray("127.3\0", 6))) << "length too small";
    EXPECT_TRUE(problemWithOid(bigEndian(60) + QByteArray("127.3\0", 6))) << "length too large";
    EXPECT_TRUE(problemWithOid(bigEndian(-1) + QByteArray("127.3\0", 6))) << "length negative";
    EXPECT_TRUE(problemWithOid("12")) << "no room for the length";
}

TEST(RecordCheck, ANestedRecordMustFillItsProperty)
{
    const QByteArray nested = encoded(intRecord());
    const auto problemWithNested = [](const QByteArray& value) {
        return recordProblem(base::SnmpIntResponseType,
                             storeTypeProperty + property(1, value) + property(2, bigEndian(0)));
    };
    EXPECT_EQ(problemWithNested(bigEndian(nested.size()) + nested), std::nullopt);
    EXPECT_TRUE(problemWithNested(bigEndian(-1)));
    EXPECT_TRUE(problemWithNested(bigEndian(nested.size() + 1) + nested));
    EXPECT_TRUE(problemWithNested(bigEndian(nested.size() - 1) + nested));
}

TEST(RecordCheck, UnknownDataTypesAreRejected)
{
    for (const int dataType : {-1, 4, 32767})
        EXPECT_TRUE(recordProblem(dataType, encoded(intRecord()))) << dataType;
}

TEST(RecordCheck, ARecordMayHaveAtMostAHundredProperties)
{
    QByteArray bytes = encoded(intRecord());
    for (int i = 0; i < 97; ++i)
        bytes += QByteArray::fromHex("0000000900000000");
    EXPECT_EQ(recordProblem(base::SnmpIntType, bytes), std::nullopt);
    bytes += QByteArray::fromHex("0000000900000000");
    EXPECT_TRUE(recordProblem(base::SnmpIntType, bytes));
}
