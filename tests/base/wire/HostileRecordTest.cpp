// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

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
using base::SnmpResponse;
using base::SnmpString;
using base::SnmpStringResponse;
using base::SnmpStringResponseVector;
using base::SnmpStringVector;
using base::SnmpVector;
using support::encoded;

namespace {

constexpr int mutations = 4000;

/// Damages an encoding as a fault or an attacker would. The same seed gives the same damage.
class Mutator
{
public:
    explicit Mutator(unsigned int seed) : m_random(seed) {}

    QByteArray mutate(QByteArray bytes)
    {
        for (int step = number(1, 4); step > 0; --step)
            mutateOnce(bytes);
        return bytes;
    }

private:
    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
    int position(const QByteArray& bytes) { return number(0, (std::max)(bytes.size() - 1, 0)); }

    void mutateOnce(QByteArray& bytes)
    {
        switch (number(0, 4)) {
        case 0:
            bytes.replace(position(bytes), 1, QByteArray(1, static_cast<char>(number(0, 255))));
            break;
        case 1:
            bytes.replace(position(bytes) / 4 * 4, 4, support::int32Bytes(extremeNumber()));
            break;
        case 2:
            bytes.truncate(position(bytes));
            break;
        case 3:
            bytes.insert(position(bytes), bytes.mid(position(bytes), number(1, 40)));
            break;
        default:
            bytes.remove(position(bytes), number(1, 12));
        }
    }

    qint32 extremeNumber()
    {
        static constexpr qint32 extremes[] = {-2147483647 - 1, -16,       -8, -1, 0, 1, 2, 3, 7, 255,
                                              65536,           2147483647};
        return extremes[number(0, static_cast<int>(std::size(extremes)) - 1)];
    }

    std::mt19937 m_random;
};

void fill(SnmpInt& record)
{
    record.oid = "1.3.6.1.4.1";
    record.value.setValue(5);
}

void fill(SnmpString& record)
{
    record.oid = "1.3.6.1.4.1";
    record.value = "a text";
}

template <typename Binding>
void fill(SnmpResponse<Binding>& record)
{
    fill(record.varbind);
    record.errorStatus = 3;
}

template <typename Element>
void fill(SnmpVector<Element>& record)
{
    record.elements.resize(3);
    for (Element& element : record.elements)
        fill(element);
}

} // namespace

template <typename Record>
class HostileRecord : public testing::Test
{
};

using AllRecords = testing::Types<SnmpInt, SnmpString, SnmpIntResponse, SnmpStringResponse, SnmpIntVector,
                                  SnmpStringVector, SnmpIntResponseVector, SnmpStringResponseVector>;
TYPED_TEST_SUITE(HostileRecord, AllRecords);

TYPED_TEST(HostileRecord, DamagedBytesAreReadOrRejectedWithAText)
{
    TypeParam whole;
    fill(whole);
    const QByteArray bytes = encoded(whole);
    Mutator mutator(20240229);
    int rejected = 0;
    for (int i = 0; i < mutations; ++i) {
        const QByteArray damaged = mutator.mutate(bytes);
        try {
            const TypeParam read(damaged);
            // The result is a sound record: encoding and decoding leave it unchanged.
            ASSERT_EQ(encoded(TypeParam(encoded(read))), encoded(read)) << damaged.toHex().toStdString();
        } catch (const QString& message) {
            ASSERT_TRUE(message.startsWith("Received ")) << message.toStdString();
            ++rejected;
        }
    }
    // If damage is always or never detected, the mutations are no good.
    EXPECT_GT(rejected, mutations / 20);
    EXPECT_LT(rejected, mutations * 19 / 20);
}

TYPED_TEST(HostileRecord, RandomBytesAreReadOrRejectedWithAText)
{
    std::mt19937 random(7);
    for (int i = 0; i < mutations; ++i) {
        QByteArray bytes(static_cast<int>(random() % 200), '\0');
        for (char& byte : bytes)
            byte =
                static_cast<char>(random() % 4 == 0 ? random() : 0); // zeros make plausible tags and lengths
        try {
            const TypeParam read(bytes);
        } catch (const QString& message) {
            ASSERT_TRUE(message.startsWith("Received ")) << message.toStdString();
        }
    }
}
