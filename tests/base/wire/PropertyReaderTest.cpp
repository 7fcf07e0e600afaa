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
    reader.required(0, "Name", first);
    reader.optional(1, "Name", absent);
    reader.required(2, "Name", last);
    EXPECT_EQ(first, 10);
    EXPECT_EQ(absent, -1);
    EXPECT_EQ(last, 12);
}

TEST(PropertyReader, AnAbsentRequiredPropertyIsThrownAsItsTag)
{
    PropertyReader reader(propertyBytes(5, int32Bytes(1)), "Some");
    int value = 0;
    try {
        reader.required(3, "Name", value);
        FAIL() << "nothing was thrown";
    } catch (int tag) {
        EXPECT_EQ(tag, 3);
    }
}

TEST(PropertyReader, AtTheEndEvenARequiredPropertyIsLeftUnchanged)
{
    PropertyReader reader(QByteArray(), "Some");
    int value = 7;
    reader.required(0, "Name", value);
    reader.optional(1, "Name", value);
    EXPECT_EQ(value, 7);
}

TEST(PropertyReader, AnIntegerCutShortIsZero)
{
    PropertyReader reader(propertyBytes(0, 4, "\x01\x02"), "Some");
    int value = 7;
    reader.required(0, "Name", value);
    EXPECT_EQ(value, 0);
}

TEST(PropertyWriter, EachPropertyCarriesItsTagAndItsLength)
{
    QByteArray bytes;
    {
        base::PropertyWriter writer(bytes);
        writer.required(0, "Name", 1);
        writer.required(4, "Name", std::string("abc"));
    }
    EXPECT_EQ(bytes, propertyBytes(0, int32Bytes(1)) + propertyBytes(4, support::textBytes("abc")));
}
