// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "base/wire/DbDataType.h"

using base::DbDataType;

TEST(DbDataType, IsNullAndZeroAfterConstruction)
{
    const DbDataType<int> data;
    EXPECT_TRUE(data.isNull());
    EXPECT_EQ(data.value(), 0);
}

TEST(DbDataType, IsNotNullOnceItHasAValueEvenZero)
{
    DbDataType<int> data;
    data.setValue(0);
    EXPECT_FALSE(data.isNull());
    EXPECT_EQ(data.value(), 0);
    EXPECT_FALSE(DbDataType<int>(0).isNull());
}

TEST(DbDataType, HoldsAnyInteger)
{
    EXPECT_EQ(DbDataType<int>(-2147483647 - 1).value(), -2147483647 - 1);
    EXPECT_EQ(DbDataType<int>(2147483647).value(), 2147483647);
    const DbDataType<int> data(5);
    EXPECT_EQ(data.valueRef(), 5);
}

TEST(DbDataType, IsNullAndZeroAgainAfterClear)
{
    DbDataType<int> data(5);
    data.clear();
    EXPECT_TRUE(data.isNull());
    EXPECT_EQ(data.value(), 0);
}

TEST(DbDataType, CopiesTakeValueAndNullness)
{
    const DbDataType<int> five(5);
    const DbDataType<int> copy(five);
    DbDataType<int> assigned(7);
    assigned = DbDataType<int>();
    EXPECT_EQ(copy.value(), 5);
    EXPECT_FALSE(copy.isNull());
    EXPECT_TRUE(assigned.isNull());
}
