// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/checks/RangeBounds.h"

using agent::boundsOf;
using agent::RangeBounds;

namespace {

std::string shown(const std::string& range)
{
    const RangeBounds bounds = boundsOf(range);
    return (bounds.isInverse ? "not " : "") + bounds.lower + " to " + bounds.upper;
}

} // namespace

TEST(RangeBounds, HaveBothEnds)
{
    EXPECT_EQ(shown("10:20"), "10 to 20");
    EXPECT_EQ(shown("-1.5e+06:0.1"), "-1.5e+06 to 0.1");
    EXPECT_EQ(shown("@10:20"), "not 10 to 20");
}

TEST(RangeBounds, ASingleNumberIsTheUpperOne)
{
    EXPECT_EQ(shown("10"), "0 to 10");
    EXPECT_EQ(shown("@10"), "not 0 to 10");
}

TEST(RangeBounds, ALimitlessEndIsEmpty)
{
    EXPECT_EQ(shown("10:"), "10 to ");
    EXPECT_EQ(shown("~:10"), " to 10");
    EXPECT_FALSE(boundsOf("~:").isLimited());
}

TEST(RangeBounds, EverythingElseIsNoLimit)
{
    for (const char* range : {"", "off", "@", ":10", "1:2:3", "ten", "1:~", "@@1", "\xff"}) {
        EXPECT_FALSE(boundsOf(range).isLimited()) << range;
        EXPECT_FALSE(boundsOf(range).isInverse) << range;
    }
}
