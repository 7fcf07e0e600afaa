// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/cells/VigilTables.h"

namespace vigilTables = agent::vigilTables;
using agent::CellValue;
using agent::ObjectId;

namespace {

/// A cell below the root of VIGIL-MIB.
ObjectId mibCell(std::initializer_list<unsigned int> arcs)
{
    return agent::below(agent::vigilMibRoot(), arcs);
}

bool fits(std::initializer_list<unsigned int> arcs, const CellValue& value)
{
    return !vigilTables::checkCell(mibCell(arcs), value);
}

} // namespace

TEST(VigilTables, TakeRowsAsTheLibraryPublishesThem)
{
    EXPECT_TRUE(fits({1, 1, 3, 1, 97, 1, 98}, 3));
    EXPECT_TRUE(fits({1, 1, 4, 1, 97, 1, 98}, std::string(60'000, 'x')));
    EXPECT_TRUE(fits({1, 1, 3, 0, 0}, 0)) << "empty keys";
    EXPECT_TRUE(fits({2, 1, 3, 1, 97, 1, 98, 1, 109}, std::string("10:20")));
    EXPECT_TRUE(fits({2, 1, 5, 1, 97, 1, 98, 1, 4294967273}, 1)) << "an octet above 127";
    EXPECT_TRUE(fits({5, 1, 5, 1, 97, 1, 98}, std::string()));
}

TEST(VigilTables, RefuseUnknownColumns)
{
    EXPECT_FALSE(fits({1, 1, 5, 1, 97, 1, 98}, 0));
    EXPECT_FALSE(fits({1, 1, 2, 1, 97, 1, 98}, std::string("b"))) << "a key";
    EXPECT_FALSE(fits({1, 2, 3, 1, 97, 1, 98}, 0)) << "beside the entry";
    EXPECT_FALSE(fits({4}, 0)) << "the table itself";
    EXPECT_FALSE(fits({4, 1, 1}, std::string("label"))) << "the column itself";
}

TEST(VigilTables, RefuseAnIndexOfAnotherForm)
{
    EXPECT_FALSE(fits({1, 1, 3, 1, 97}, 0)) << "one key";
    EXPECT_FALSE(fits({1, 1, 3, 1, 97, 1, 98, 1, 99}, 0)) << "three keys";
    EXPECT_FALSE(fits({1, 1, 3, 1, 97, 2, 98}, 0)) << "cut short";
    EXPECT_FALSE(fits({1, 1, 3, 1, 97, 4294967295, 98}, 0)) << "a huge length";
    EXPECT_FALSE(fits({1, 1, 3, 1, 256, 1, 98}, 0)) << "not an octet";
    EXPECT_FALSE(fits({2, 1, 2, 1, 97, 1, 98}, std::string("MB"))) << "no metric";
}

TEST(VigilTables, RefuseValuesOutsideTheSyntax)
{
    EXPECT_FALSE(fits({1, 1, 3, 1, 97, 1, 98}, std::string("ok")));
    EXPECT_FALSE(fits({1, 1, 4, 1, 97, 1, 98}, 0));
    EXPECT_FALSE(fits({1, 1, 3, 1, 97, 1, 98}, 4));
    EXPECT_FALSE(fits({1, 1, 3, 1, 97, 1, 98}, -1));
    EXPECT_FALSE(fits({2, 1, 3, 1, 97, 1, 98, 1, 109}, std::string(256, '1')));
    EXPECT_FALSE(fits({5, 1, 1, 1, 97, 1, 98}, 0));
}

TEST(VigilTables, TakeAnythingOutsideTheFiveTables)
{
    EXPECT_TRUE(fits({6}, 1));
    EXPECT_TRUE(fits({9, 1}, std::string("own")));
    EXPECT_FALSE(vigilTables::checkCell(agent::below(agent::enterpriseRoot(), {5, 1}), 1));
    EXPECT_EQ(vigilTables::columnOf(mibCell({9, 1, 3, 1})), nullptr);
}

TEST(VigilTables, FindTheColumnOfACell)
{
    EXPECT_STREQ(vigilTables::columnOf(mibCell({4, 1, 2, 1, 97, 1, 98, 1, 109}))->name, "vigilPerfDataValue");
    EXPECT_EQ(vigilTables::columnOf(mibCell({4, 1, 6, 1, 97, 1, 98, 1, 109})), nullptr);
}
