// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/PropertyReader.h"

#include <gtest/gtest.h>

#include "base/wire/PropertyWriter.h"
#include "support/RecordBytes.h"

using base::PropertyReader;
using support::int32Bytes;
using support::propertyBytes;

TEST(PropertyReader, AnAbsentOptionalPropertyLeavesTheNextOneToBeRead)
{
    PropertyReader reader(propertyBytes(0, int32Bytes(10)) + propertyBytes(2, int32Bytes(12)), "Some");
    int first = 0;
    int absent = -1;
    int last = 0;
    reader.readRequired(0, first);
    reader.readOptional(1, absent);
    reader.readRequired(2, last);
    EXPECT_EQ(first, 10);
    EXPECT_EQ(absent, -1);
    EXPECT_EQ(last, 12);
}

TEST(PropertyReader, AnAbsentRequiredPropertyIsThrownAsItsTag)
{
    PropertyReader reader(propertyBytes(5, int32Bytes(1)), "Some");
    int value = 0;
    try {
        reader.readRequired(3, value);
        FAIL() << "nothing was thrown";
    } catch (int tag) {
        EXPECT_EQ(tag, 3);
    }
}

TEST(PropertyReader, AtTheEndEvenARequiredPropertyIsLeftUnchanged)
{
    PropertyReader reader(QByteArray(), "Some");
    int value = 7;
    reader.readRequired(0, value);
    reader.readOptional(1, value);
    EXPECT_EQ(value, 7);
}

TEST(PropertyReader, AnIntegerCutShortIsZero)
{
    PropertyReader reader(propertyBytes(0, 4, "\x01\x02"), "Some");
    int value = 7;
    reader.readRequired(0, value);
    EXPECT_EQ(value, 0);
}

TEST(PropertyWriter, EachPropertyCarriesItsTagAndItsLength)
{
    QByteArray bytes;
    {
        base::PropertyWriter writer(bytes);
        writer.write(0, 1);
        writer.write(4, std::string("abc"));
    }
    EXPECT_EQ(bytes, propertyBytes(0, int32Bytes(1)) + propertyBytes(4, support::textBytes("abc")));
}
