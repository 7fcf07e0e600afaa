// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <set>

#include "agent/checks/RowNumbers.h"

using agent::ObjectId;
using agent::RowNumbers;

namespace {

class RowNumbersTest : public testing::Test
{
protected:
    unsigned int take(RowNumbers& numbers, const ObjectId& row)
    {
        const unsigned int number =
            numbers.take(row, [this](unsigned int each) { return used.count(each) > 0; });
        used.insert(number);
        return number;
    }

    void release(RowNumbers& numbers, const ObjectId& row, unsigned int number)
    {
        used.erase(number);
        numbers.release(row, number);
    }

    std::set<unsigned int> used;
};

} // namespace

TEST_F(RowNumbersTest, CountFromOne)
{
    RowNumbers numbers;
    EXPECT_EQ(take(numbers, {1}), 1U);
    EXPECT_EQ(take(numbers, {2}), 2U);
}

TEST_F(RowNumbersTest, AReturningRowGetsItsNumberAgain)
{
    RowNumbers numbers;
    take(numbers, {1});
    take(numbers, {2});
    release(numbers, {1}, 1);
    EXPECT_EQ(take(numbers, {3}), 3U);
    EXPECT_EQ(take(numbers, {1}), 1U);
    EXPECT_EQ(numbers.size(), 0U);
}

TEST_F(RowNumbersTest, RememberOnlyTheLastRowsToGo)
{
    RowNumbers numbers;
    constexpr unsigned int rows = RowNumbers::remembered + 1;
    for (unsigned int row = 1; row <= rows; ++row)
        release(numbers, {row}, take(numbers, {row}));
    EXPECT_EQ(numbers.size(), RowNumbers::remembered);
    EXPECT_EQ(take(numbers, {2}), 2U);
    EXPECT_EQ(take(numbers, {1}), rows + 1);
}

TEST_F(RowNumbersTest, AfterTheLargestNumberTheFreeOnesAreUsedAgain)
{
    RowNumbers numbers(3);
    for (unsigned int row = 1; row <= 3; ++row)
        EXPECT_EQ(take(numbers, {row}), row);
    release(numbers, {2}, 2);
    EXPECT_EQ(take(numbers, {4}), 2U);
    release(numbers, {1}, 1);
    EXPECT_EQ(take(numbers, {1}), 1U);
}
