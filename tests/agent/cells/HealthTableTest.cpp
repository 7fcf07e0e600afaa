// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/cells/HealthTable.h"

namespace healthTable = agent::healthTable;
using agent::ObjectId;
using healthTable::Column;

namespace {

const ObjectId entry{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 1, 1};

ObjectId below(std::initializer_list<unsigned int> arcs)
{
    ObjectId id = entry;
    id.insert(id.end(), arcs);
    return id;
}

} // namespace

TEST(HealthTable, FindsColumnAndCheckOfACell)
{
    const auto status = healthTable::positionOf(below({3, 1, 97, 1, 98}));
    ASSERT_TRUE(status);
    EXPECT_EQ(status->column, Column::Status);
    EXPECT_EQ(status->check, (ObjectId{1, 97, 1, 98}));
    EXPECT_EQ(healthTable::positionOf(below({4, 1, 97, 1, 98}))->column, Column::Summary);
}

TEST(HealthTable, IgnoresOtherObjects)
{
    EXPECT_FALSE(healthTable::positionOf(below({2, 1, 97})));
    EXPECT_FALSE(healthTable::positionOf(below({5, 1, 97})));
    EXPECT_FALSE(healthTable::positionOf(below({3})));
    EXPECT_FALSE(healthTable::positionOf(below({})));
    EXPECT_FALSE(healthTable::positionOf({1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 3, 1, 3, 1, 97}));
}

TEST(HealthTable, BuildsTheIdentifierOfACell)
{
    EXPECT_EQ(healthTable::cellOf(Column::Summary, {1, 97}), below({4, 1, 97}));
}
