// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

#include "base/wire/Decode.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"
#include "base/wire/SnmpVector.h"
#include "support/EncodedRecord.h"
#include "support/RecordBytes.h"

using base::DbBaseType;
using base::SnmpInt;
using base::SnmpIntResponse;
using base::SnmpIntResponseVector;
using base::SnmpIntVector;
using base::SnmpString;
using base::SnmpStringResponse;
using base::SnmpStringResponseVector;
using base::SnmpStringVector;
using support::encoded;
using support::int32Bytes;
using support::nestedBytes;
using support::propertyBytes;
using support::textBytes;

namespace {

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// The text thrown by decoding bytes as a Record, or "nothing".
template <typename Record>
std::string failure(const QByteArray& bytes)
{
    try {
        const Record record(bytes);
    } catch (const QString& message) {
        return message.toStdString();
    }
    return "nothing";
}

SnmpInt intBinding(const std::string& oid, int value, int storeType = 0)
{
    SnmpInt record;
    record.oid = oid;
    record.value.setValue(value);
    record.setStoreType(storeType);
    return record;
}

SnmpString stringBinding(const std::string& oid, const std::string& value, int storeType = 0)
{
    SnmpString record;
    record.oid = oid;
    record.value = value;
    record.setStoreType(storeType);
    return record;
}

template <typename Binding>
auto response(const Binding& varbind, int errorStatus)
{
    base::SnmpResponse<Binding> record;
    record.varbind = varbind;
    record.errorStatus = errorStatus;
    record.setStoreType(9);
    return record;
}

template <typename Element>
auto vectorOf(const Element& first, const Element& second)
{
    base::SnmpVector<Element> record;
    record.elements = {first, second};
    record.setStoreType(11);
    return record;
}

const QByteArray storeType = propertyBytes(0, int32Bytes(0));
const QByteArray oneTwo = propertyBytes(1, textBytes("1.2"));

// Samples without a single member at its default.
template <typename Record>
Record sample();
template <>
SnmpInt sample()
{
    return intBinding("1.3.6", -7, 3);
}
template <>
SnmpString sample()
{
    return stringBinding("1.3.6", "gr\xC3\xBCn", 4);
}
template <>
SnmpIntResponse sample()
{
    return response(sample<SnmpInt>(), 10);
}
template <>
SnmpStringResponse sample()
{
    return response(sample<SnmpString>(), 2);
}
template <>
SnmpIntVector sample()
{
    return vectorOf(sample<SnmpInt>(), intBinding("1", 1));
}
template <>
SnmpStringVector sample()
{
    return vectorOf(sample<SnmpString>(), stringBinding("1", ""));
}
template <>
SnmpIntResponseVector sample()
{
    return vectorOf(sample<SnmpIntResponse>(), response(intBinding("1", 1), 0));
}
template <>
SnmpStringResponseVector sample()
{
    return vectorOf(sample<SnmpStringResponse>(), response(stringBinding("1", "2"), 0));
}

} // namespace

template <typename Record>
class EveryRecord : public testing::Test
{
};

using AllRecords = testing::Types<SnmpInt, SnmpString, SnmpIntResponse, SnmpStringResponse, SnmpIntVector,
                                  SnmpStringVector, SnmpIntResponseVector, SnmpStringResponseVector>;
TYPED_TEST_SUITE(EveryRecord, AllRecords);

TYPED_TEST(EveryRecord, StartsWithTheStoreTypeZero)
{
    EXPECT_EQ(TypeParam().storeType(), 0);
    EXPECT_TRUE(encoded(TypeParam()).startsWith(hex("000000000000000400000000")));
}

TYPED_TEST(EveryRecord, SurvivesTheWayThroughItsEncoding)
{
    const TypeParam original = sample<TypeParam>();
    const TypeParam decoded(encoded(original));
    EXPECT_EQ(encoded(decoded), encoded(original));
    EXPECT_EQ(decoded.storeType(), original.storeType());
}

TYPED_TEST(EveryRecord, AnEmptyByteArrayDecodesToARecordOfDefaults)
{
    EXPECT_EQ(encoded(TypeParam(QByteArray())), encoded(TypeParam()));
    EXPECT_EQ(encoded(TypeParam(QByteArray(""))), encoded(TypeParam()));
}

TYPED_TEST(EveryRecord, DecodingNoBytesLeavesTheRecordAsItWas)
{
    TypeParam record = sample<TypeParam>();
    record.decode(QByteArray());
    EXPECT_EQ(encoded(record), encoded(sample<TypeParam>()));
}

TYPED_TEST(EveryRecord, ARecordCutShortAfterTheStoreTypeDecodesWithDefaults)
{
    TypeParam expected;
    expected.setStoreType(5);
    EXPECT_EQ(encoded(TypeParam(propertyBytes(0, int32Bytes(5)))), encoded(expected));
}

TYPED_TEST(EveryRecord, AMissingStoreTypeIsNamedInTheMessage)
{
    const std::string expected = std::string("Received incomplete structure ") + TypeParam::recordName +
                                 ": Missing property 'StoreType'";
    EXPECT_EQ(failure<TypeParam>(oneTwo), expected);
}

TYPED_TEST(EveryRecord, UnknownPropertiesAfterTheKnownOnesAreNotRead)
{
    const QByteArray bytes = encoded(sample<TypeParam>());
    EXPECT_EQ(encoded(TypeParam(bytes + propertyBytes(7, "anything"))), bytes);
}

TYPED_TEST(EveryRecord, PropertiesWithNegativeTagsAreSkipped)
{
    const QByteArray bytes = encoded(sample<TypeParam>());
    EXPECT_EQ(encoded(TypeParam(propertyBytes(-1, "older") + bytes)), bytes);
}

TYPED_TEST(EveryRecord, ACloneIsEqualAndIndependent)
{
    TypeParam original = sample<TypeParam>();
    const DbBaseType& base = original;
    const std::unique_ptr<DbBaseType> clone(base.clone());
    ASSERT_NE(dynamic_cast<TypeParam*>(clone.get()), nullptr);
    EXPECT_NE(clone.get(), &base);
    EXPECT_EQ(encoded(*clone), encoded(original));

    original.clear();
    EXPECT_EQ(encoded(*clone), encoded(sample<TypeParam>()));
}

TYPED_TEST(EveryRecord, ClearBringsBackTheDefaults)
{
    TypeParam record = sample<TypeParam>();
    DbBaseType& base = record;
    base.clear();
    EXPECT_EQ(record.storeType(), 0);
    EXPECT_EQ(encoded(record), encoded(TypeParam()));
}

TYPED_TEST(EveryRecord, AssignCopiesTheStoreTypeAloneAndReturnsTheRecord)
{
    TypeParam target;
    DbBaseType& base = target;
    EXPECT_EQ(&base.assign(sample<TypeParam>()), &base);

    TypeParam expected;
    expected.setStoreType(sample<TypeParam>().storeType());
    EXPECT_EQ(encoded(target), encoded(expected));
}

TYPED_TEST(EveryRecord, AssignToItselfChangesNothing)
{
    TypeParam record = sample<TypeParam>();
    DbBaseType& base = record;
    EXPECT_EQ(&base.assign(record), &base);
    EXPECT_EQ(encoded(record), encoded(sample<TypeParam>()));
}

TYPED_TEST(EveryRecord, AllReadersOfTheStoreTypeAgree)
{
    TypeParam record;
    DbBaseType& base = record;
    base.setStoreType(42);
    EXPECT_EQ(base.storeType(), 42);
    EXPECT_EQ(base.getStoreType(), 42);
    EXPECT_EQ(base.currentStoreType(), 42);
    EXPECT_FALSE(base.storeTypeData().isNull());
    EXPECT_EQ(base.storeTypeData().value(), 42);
}

TYPED_TEST(EveryRecord, BothWritersOfTheStoreTypeDoTheSame)
{
    TypeParam record;
    DbBaseType& base = record;
    base.setStoreType(-1);
    EXPECT_EQ(base.storeType(), -1);
    base.updateStoreType(7);
    EXPECT_EQ(base.storeType(), 7);
}

TYPED_TEST(EveryRecord, TheStoreTypeOfADefaultRecordIsZeroAndNotNull)
{
    EXPECT_FALSE(TypeParam().storeTypeData().isNull());
    EXPECT_EQ(TypeParam().storeTypeData().value(), 0);
}

TYPED_TEST(EveryRecord, ANegativePropertyLengthIsRejected)
{
    const std::string expected =
        std::string("Received malformed structure ") + TypeParam::recordName + ": Property length -8";
    EXPECT_EQ(failure<TypeParam>(propertyBytes(-1, -8, "")), expected);
    EXPECT_EQ(failure<TypeParam>(storeType + propertyBytes(0, -8, "")), expected);
    EXPECT_EQ(failure<TypeParam>(propertyBytes(0, -8, int32Bytes(1))), expected);
}

TYPED_TEST(EveryRecord, ASkippedPropertyBeyondTheEndEndsTheRecord)
{
    const QByteArray bytes = storeType + propertyBytes(0, std::numeric_limits<qint32>::max(), "few bytes");
    EXPECT_EQ(encoded(TypeParam(bytes)), encoded(TypeParam()));
}

TYPED_TEST(EveryRecord, AnEncodingCutAnywhereIsReadOrRejected)
{
    const QByteArray bytes = encoded(sample<TypeParam>());
    for (int length = 0; length <= bytes.size(); ++length)
        failure<TypeParam>(bytes.left(length));
}

TEST(SnmpInt, EncodesToThese40Bytes)
{
    const QByteArray expected = hex("000000000000000400000000"
                                    "000000010000000800000004312E3200"
                                    "000000020000000400000005");
    ASSERT_EQ(expected.size(), 40);
    EXPECT_EQ(encoded(intBinding("1.2", 5)), expected);
}

TEST(SnmpInt, DecodesFromThese40Bytes)
{
    const SnmpInt record(hex("000000000000000400000000"
                             "000000010000000800000004312E3200"
                             "000000020000000400000005"));
    EXPECT_EQ(record.storeType(), 0);
    EXPECT_EQ(record.oid, "1.2");
    EXPECT_FALSE(record.value.isNull());
    EXPECT_EQ(record.value.value(), 5);
}

TEST(SnmpInt, IntegersAreBigEndianAndSigned)
{
    EXPECT_TRUE(encoded(intBinding("", -2)).endsWith(hex("FFFFFFFE")));
    EXPECT_TRUE(encoded(intBinding("", 0x01020304)).endsWith(hex("01020304")));
    EXPECT_EQ(SnmpInt(encoded(intBinding("", -2))).value.value(), -2);
    EXPECT_EQ(SnmpInt(encoded(intBinding("", std::numeric_limits<int>::min()))).value.value(),
              std::numeric_limits<int>::min());
}

TEST(SnmpInt, WithoutAValueItEncodesTo28BytesAndDecodesWithoutOne)
{
    SnmpInt unset;
    unset.oid = "1.2";
    EXPECT_EQ(encoded(unset).size(), 28);
    const SnmpInt decoded(encoded(unset));
    EXPECT_TRUE(decoded.value.isNull());
    EXPECT_EQ(decoded.oid, "1.2");
}

TEST(SnmpInt, TheValueZeroIsAValue)
{
    EXPECT_EQ(encoded(intBinding("1.2", 0)).size(), 40);
    EXPECT_FALSE(SnmpInt(encoded(intBinding("1.2", 0))).value.isNull());
}

TEST(SnmpInt, AMissingOidIsNamedInTheMessage)
{
    EXPECT_EQ(failure<SnmpInt>(storeType + propertyBytes(2, int32Bytes(5))),
              "Received incomplete structure SnmpInt: Missing property 'Oid'");
}

TEST(SnmpInt, AnUnknownPropertyAfterTheOidLeavesTheValueNull)
{
    const SnmpInt record(storeType + oneTwo + propertyBytes(7, int32Bytes(5)));
    EXPECT_EQ(record.oid, "1.2");
    EXPECT_TRUE(record.value.isNull());
}

TEST(SnmpInt, PropertiesOutOfOrderAreNotFound)
{
    EXPECT_EQ(failure<SnmpInt>(storeType + propertyBytes(2, int32Bytes(5)) + oneTwo),
              "Received incomplete structure SnmpInt: Missing property 'Oid'");
}

TEST(SnmpInt, AReadValueReplacesAnOldOneAndAnAbsentOneDoesNot)
{
    SnmpInt record = intBinding("9", 9);
    record.decode(storeType + oneTwo);
    EXPECT_EQ(record.value.value(), 9);
    record.decode(storeType + oneTwo + propertyBytes(2, int32Bytes(5)));
    EXPECT_EQ(record.value.value(), 5);
}

TEST(SnmpString, EncodesToTheseBytes)
{
    EXPECT_EQ(encoded(stringBinding("1.2", "abc")), hex("000000000000000400000000"
                                                        "000000010000000800000004312E3200"
                                                        "00000002000000080000000461626300"));
}

TEST(SnmpString, EmptyTextsEncodeAsLengthOneAndAZeroByte)
{
    EXPECT_EQ(encoded(SnmpString()), hex("000000000000000400000000"
                                         "00000001000000050000000100"
                                         "00000002000000050000000100"));
    const SnmpString decoded(encoded(SnmpString()));
    EXPECT_EQ(decoded.oid, "");
    EXPECT_EQ(decoded.value, "");
}

TEST(SnmpString, AnEmptyTextReplacesAnOldOne)
{
    SnmpString record = stringBinding("9", "old");
    record.decode(encoded(stringBinding("1.2", "")));
    EXPECT_EQ(record.value, "");
}

TEST(SnmpString, ATextIsCutAtItsFirstZeroByte)
{
    const SnmpString record = stringBinding("1.2", std::string("ab\0cd", 5));
    EXPECT_EQ(encoded(record), encoded(stringBinding("1.2", "ab")));
}

TEST(SnmpString, TextTravelsByteForByte)
{
    std::string everyByte;
    for (int byte = 1; byte < 256; ++byte)
        everyByte += static_cast<char>(byte);
    EXPECT_EQ(SnmpString(encoded(stringBinding("1.2", everyByte))).value, everyByte);
}

TEST(SnmpString, ALargeTextTravelsWhole)
{
    const std::string large(3 * 1024 * 1024 + 17, 'x');
    EXPECT_EQ(SnmpString(encoded(stringBinding("1.2", large))).value, large);
}

TEST(SnmpString, AMissingOidIsNamedInTheMessage)
{
    EXPECT_EQ(failure<SnmpString>(storeType + propertyBytes(2, textBytes("v"))),
              "Received incomplete structure SnmpString: Missing property 'Oid'");
}

TEST(SnmpString, AMissingValueIsNamedInTheMessageUnlikeForAnInteger)
{
    EXPECT_EQ(failure<SnmpString>(storeType + oneTwo + propertyBytes(3, "x")),
              "Received incomplete structure SnmpString: Missing property 'Value'");
}

TEST(SnmpString, CutShortAfterTheOidItHasAnEmptyValue)
{
    const SnmpString record(storeType + oneTwo);
    EXPECT_EQ(record.oid, "1.2");
    EXPECT_EQ(record.value, "");
}

TEST(SnmpString, ARepeatedPropertyIsSkippedByItsLength)
{
    const SnmpString record(storeType + propertyBytes(0, "thirteen byte") + oneTwo +
                            propertyBytes(2, textBytes("v")));
    EXPECT_EQ(record.storeType(), 0);
    EXPECT_EQ(record.oid, "1.2");
    EXPECT_EQ(record.value, "v");
}

TEST(SnmpString, ANullTextLeavesTheMemberUnchanged)
{
    SnmpString record = stringBinding("9", "old");
    record.decode(storeType + oneTwo + propertyBytes(2, int32Bytes(0)));
    EXPECT_EQ(record.value, "old");
    EXPECT_EQ(record.oid, "1.2");
}

TEST(SnmpString, AReceivedTextEndsAtItsFirstZeroByte)
{
    const SnmpString record(storeType + oneTwo + propertyBytes(2, textBytes(QByteArray("ab\0cd", 5))));
    EXPECT_EQ(record.value, "ab");
}

TEST(SnmpString, AReceivedTextNeedsNoZeroByte)
{
    const SnmpString record(storeType + oneTwo + propertyBytes(2, int32Bytes(3) + "abc"));
    EXPECT_EQ(record.value, "abc");
}

TEST(SnmpString, ATextLengthBeyondTheEndLeavesTheMemberUnchanged)
{
    for (const qint32 length : {5, 1000, 0x7FFFFFFF, -1}) {
        const SnmpString value(storeType + oneTwo + propertyBytes(2, int32Bytes(length) + "abc"));
        EXPECT_EQ(value.oid, "1.2") << length;
        EXPECT_EQ(value.value, "") << length;

        const SnmpString oid(storeType + propertyBytes(1, int32Bytes(length) + "1.2"));
        EXPECT_EQ(oid.oid, "") << length;
    }
}

TEST(SnmpString, ALengthBeyondTheEndOfAWantedPropertyDoesNoHarm)
{
    const SnmpString record(storeType + propertyBytes(1, 0x7FFFFFFF, textBytes("1.2")) +
                            propertyBytes(2, textBytes("v")));
    EXPECT_EQ(record.oid, "1.2");
    EXPECT_EQ(record.value, "v");
}

TEST(SnmpResponse, EncodesItsBindingAsAByteArray)
{
    SnmpIntResponse record;
    record.varbind = intBinding("1.2", 5);
    record.errorStatus = 10;
    EXPECT_EQ(encoded(record), hex("000000000000000400000000"
                                   "000000010000002C00000028") +
                                   encoded(intBinding("1.2", 5)) + hex("00000002000000040000000A"));
}

TEST(SnmpResponse, GivesBackItsBindingWithItsStoreTypeAndItsVerdict)
{
    const SnmpStringResponse decoded(encoded(response(stringBinding("1.2", "abc", 77), 10)));
    EXPECT_EQ(decoded.storeType(), 9);
    EXPECT_EQ(decoded.varbind.storeType(), 77);
    EXPECT_EQ(decoded.varbind.oid, "1.2");
    EXPECT_EQ(decoded.varbind.value, "abc");
    EXPECT_EQ(decoded.errorStatus, 10);
}

TEST(SnmpResponse, ANullValueInTheBindingStaysNull)
{
    SnmpInt unset;
    unset.oid = "1.2";
    EXPECT_TRUE(SnmpIntResponse(encoded(response(unset, 1))).varbind.value.isNull());
}

TEST(SnmpResponse, TheDefaultErrorStatusIsZero)
{
    EXPECT_EQ(SnmpIntResponse().errorStatus, 0);
    EXPECT_TRUE(encoded(SnmpIntResponse()).endsWith(hex("000000020000000400000000")));
}

TEST(SnmpResponse, AMissingBindingIsNamedInTheMessage)
{
    const QByteArray bytes = storeType + propertyBytes(2, int32Bytes(0));
    EXPECT_EQ(failure<SnmpIntResponse>(bytes),
              "Received incomplete structure SnmpIntResponse: Missing property 'Varbind'");
    EXPECT_EQ(failure<SnmpStringResponse>(bytes),
              "Received incomplete structure SnmpStringResponse: Missing property 'Varbind'");
}

TEST(SnmpResponse, AMissingErrorStatusIsNamedInTheMessage)
{
    EXPECT_EQ(failure<SnmpIntResponse>(storeType + propertyBytes(1, nestedBytes(encoded(SnmpInt()))) +
                                       propertyBytes(3, "x")),
              "Received incomplete structure SnmpIntResponse: Missing property 'ErrorStatus'");
    EXPECT_EQ(failure<SnmpStringResponse>(storeType + propertyBytes(1, nestedBytes(encoded(SnmpString()))) +
                                          propertyBytes(3, "x")),
              "Received incomplete structure SnmpStringResponse: Missing property 'ErrorStatus'");
}

TEST(SnmpResponse, AFailureOfTheBindingCarriesTheBindingsMessage)
{
    const QByteArray incomplete = storeType + propertyBytes(2, int32Bytes(5));
    EXPECT_EQ(failure<SnmpIntResponse>(storeType + propertyBytes(1, nestedBytes(incomplete))),
              "Received incomplete structure SnmpInt: Missing property 'Oid'");
    EXPECT_EQ(failure<SnmpStringResponse>(storeType + propertyBytes(1, nestedBytes(incomplete))),
              "Received incomplete structure SnmpString: Missing property 'Oid'");
}

TEST(SnmpResponse, ANullByteArrayAsBindingGivesADefaultOne)
{
    const QByteArray null = hex("FFFFFFFF");
    const SnmpIntResponse record(storeType + propertyBytes(1, null) + propertyBytes(2, int32Bytes(4)));
    EXPECT_EQ(record.varbind.oid, "");
    EXPECT_TRUE(record.varbind.value.isNull());
    EXPECT_EQ(record.errorStatus, 4);
}

TEST(SnmpResponse, ABindingBeyondTheEndIsADefaultOne)
{
    for (const qint32 length : {1000, 0x7FFFFFFF, -2}) {
        const SnmpIntResponse record(storeType + propertyBytes(1, int32Bytes(length) + encoded(SnmpInt())));
        EXPECT_EQ(record.varbind.oid, "") << length;
        EXPECT_EQ(record.errorStatus, 0) << length;
    }
}

TEST(SnmpVector, EncodesTheCountAndEachElementAsAByteArray)
{
    SnmpIntVector record;
    record.elements = {intBinding("1.2", 5), intBinding("1.2", 6)};
    EXPECT_EQ(encoded(record), hex("000000000000000400000000"
                                   "000000010000005C00000002"
                                   "00000028") +
                                   encoded(intBinding("1.2", 5)) + hex("00000028") +
                                   encoded(intBinding("1.2", 6)));
}

TEST(SnmpVector, GivesBackItsElementsInTheirOrder)
{
    SnmpStringVector record;
    record.elements = {stringBinding("1", "a"), stringBinding("2", "b"), stringBinding("3", "c")};
    const SnmpStringVector decoded(encoded(record));
    ASSERT_EQ(decoded.elements.size(), 3u);
    EXPECT_EQ(decoded.elements[0].oid, "1");
    EXPECT_EQ(decoded.elements[1].value, "b");
    EXPECT_EQ(decoded.elements[2].oid, "3");
}

TEST(SnmpVector, WithoutElementsItEncodesTheCountZero)
{
    EXPECT_EQ(encoded(SnmpIntVector()), hex("000000000000000400000000"
                                            "000000010000000400000000"));
}

TEST(SnmpVector, DecodingTheCountZeroDoesNotTouchTheElements)
{
    SnmpIntVector record;
    record.elements = {intBinding("1.2", 5)};
    record.decode(encoded(SnmpIntVector()));
    ASSERT_EQ(record.elements.size(), 1u);
    EXPECT_EQ(record.elements[0].oid, "1.2");
}

TEST(SnmpVector, DecodingElementsReplacesTheOldOnes)
{
    SnmpIntVector record;
    record.elements = {intBinding("1", 1), intBinding("2", 2), intBinding("3", 3)};
    SnmpIntVector other;
    other.elements = {intBinding("9", 9)};
    record.decode(encoded(other));
    EXPECT_EQ(encoded(record), encoded(other));
}

TEST(SnmpVector, TruncatedElementsKeepTheirOldContents)
{
    SnmpIntVector record;
    record.elements = {intBinding("1", 1), intBinding("2", 2), intBinding("3", 3)};
    record.decode(storeType +
                  propertyBytes(1, int32Bytes(2) + nestedBytes(storeType) + nestedBytes(storeType + oneTwo)));
    ASSERT_EQ(record.elements.size(), 2u);
    EXPECT_EQ(record.elements[0].oid, "1");
    EXPECT_EQ(record.elements[0].value.value(), 1);
    EXPECT_EQ(record.elements[1].oid, "1.2");
    EXPECT_EQ(record.elements[1].value.value(), 2);
}

TEST(SnmpVector, TheVectorPropertyIsOptional)
{
    const SnmpIntVector record(storeType + propertyBytes(5, "later"));
    EXPECT_TRUE(record.elements.empty());
}

TEST(SnmpVector, AFailureOfAnElementCarriesTheElementsMessage)
{
    const QByteArray incomplete = storeType + propertyBytes(2, int32Bytes(5));
    EXPECT_EQ(failure<SnmpIntVector>(storeType + propertyBytes(1, int32Bytes(1) + nestedBytes(incomplete))),
              "Received incomplete structure SnmpInt: Missing property 'Oid'");
    EXPECT_EQ(failure<SnmpStringResponseVector>(storeType +
                                                propertyBytes(1, int32Bytes(1) + nestedBytes(incomplete))),
              "Received incomplete structure SnmpStringResponse: Missing property 'Varbind'");
}

TEST(SnmpVector, ACountTooLargeForTheBytesIsRejected)
{
    const QByteArray element = nestedBytes(QByteArray());
    EXPECT_EQ(failure<SnmpIntVector>(storeType + propertyBytes(1, int32Bytes(3) + element + element)),
              "Received malformed structure SnmpIntVector: Element count 3");
    EXPECT_EQ(failure<SnmpIntVector>(storeType + propertyBytes(1, int32Bytes(0x7FFFFFFF) + element)),
              "Received malformed structure SnmpIntVector: Element count 2147483647");
    EXPECT_EQ(failure<SnmpIntVector>(storeType + propertyBytes(1, int32Bytes(2) + element + element)),
              "nothing");
}

TEST(SnmpVector, ANegativeCountIsRejected)
{
    EXPECT_EQ(failure<SnmpStringVector>(storeType + propertyBytes(1, int32Bytes(-1))),
              "Received malformed structure SnmpStringVector: Element count -1");
}

namespace {

/// A record that throws an exception of the test's choice when it is read.
template <typename Exception>
struct FailingRecord
{
    static constexpr const char* recordName = "Some";
    Exception exception;
    int first = 0;

    template <typename Record, typename Visitor>
    static void describe(Record& record, Visitor& visitor)
    {
        visitor.required(0, "First", record.first);
        if constexpr (std::is_same_v<Visitor, base::PropertyReader>)
            throw record.exception;
    }
};

} // namespace

TEST(Decode, AMissingPropertyOutsideTheDescriptionHasAnEmptyName)
{
    const auto missing = [](int tag) {
        FailingRecord<int> record{tag};
        try {
            base::decodeRecord(QByteArray(), record);
        } catch (const QString& message) {
            return message.toStdString();
        }
        return std::string();
    };
    EXPECT_EQ(missing(0), "Received incomplete structure Some: Missing property 'First'");
    EXPECT_EQ(missing(1), "Received incomplete structure Some: Missing property ''");
    EXPECT_EQ(missing(-1), "Received incomplete structure Some: Missing property ''");
}

TEST(Decode, AnyOtherExceptionPassesThrough)
{
    FailingRecord<std::bad_alloc> record;
    EXPECT_THROW(base::decodeRecord(QByteArray(), record), std::bad_alloc);
}

TEST(DataType, TheNumbersAreThoseOfTheFrameHeader)
{
    EXPECT_EQ(base::SnmpIntType, 0);
    EXPECT_EQ(base::SnmpStringType, 1);
    EXPECT_EQ(base::SnmpIntResponseType, 2);
    EXPECT_EQ(base::SnmpStringResponseType, 3);
}
