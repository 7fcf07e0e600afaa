// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/core/ObjectId.h"

using agent::enterpriseRoot;
using agent::fromRelativeText;
using agent::ObjectId;

TEST(ObjectId, ARelativeTextIsReadBelowTheEnterprise)
{
    EXPECT_EQ(fromRelativeText("127.3"), (ObjectId{1, 3, 6, 1, 4, 1, 32473, 127, 3}));
}

TEST(ObjectId, TheEmptyTextIsTheEnterpriseItself)
{
    EXPECT_EQ(fromRelativeText(""), enterpriseRoot());
}

TEST(ObjectId, TheLargestArcOf32BitsIsRead)
{
    EXPECT_EQ(fromRelativeText("1.4294967295")->back(), 4294967295u);
}

TEST(ObjectId, OnlyNumbersBetweenDotsAreRead)
{
    for (const char* text : {"1.x.3", ".1", "1.", "1..2", ".", "-1", "+1", " 1", "1 ", "1.4294967296",
                             "1.0x2", "99999999999999999999"})
        EXPECT_FALSE(fromRelativeText(text)) << text;
}

TEST(ObjectId, AFullTextMayBeginWithADot)
{
    EXPECT_EQ(agent::fromFullText("1.3.6"), (ObjectId{1, 3, 6}));
    EXPECT_EQ(agent::fromFullText(".1.3.6"), (ObjectId{1, 3, 6}));
    for (const char* text : {"", ".", "..1", "1.", "1..3", "a", "1.3.6 "})
        EXPECT_EQ(agent::fromFullText(text), std::nullopt) << text;
}

TEST(ObjectId, ATextSurvivesTheRoundTrip)
{
    EXPECT_EQ(agent::toRelativeText(*fromRelativeText("127.0.4294967273")), "127.0.4294967273");
    EXPECT_EQ(agent::toRelativeText(enterpriseRoot()), "");
    EXPECT_EQ(agent::toText(*fromRelativeText("5")), QStringLiteral("1.3.6.1.4.1.32473.5"));
}

TEST(ObjectId, ATreeContainsItselfAndEverythingBelowIt)
{
    EXPECT_TRUE(agent::isInTree({1, 3}, {1, 3}));
    EXPECT_TRUE(agent::isInTree({1, 3}, {1, 3, 0}));
    EXPECT_FALSE(agent::isInTree({1, 3}, {1}));
    EXPECT_FALSE(agent::isInTree({1, 3}, {1, 30}));
}
