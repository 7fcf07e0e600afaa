// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/documents/SeriesLabels.h"
#include "support/PublishedChecks.h"

using agent::ObjectId;
using agent::seriesLabels;
using support::PublishedChecks;

TEST(SeriesLabels, NameTheKeys)
{
    EXPECT_EQ(seriesLabels(PublishedChecks::indexOf({"shop", "web server"})),
              "first=\"shop\",second=\"web server\"");
    EXPECT_EQ(seriesLabels(PublishedChecks::indexOf({"shop", "", "Länge"})),
              "first=\"shop\",second=\"\",metric=\"Länge\"");
}

TEST(SeriesLabels, QuotesAndLineBreaksCannotEndALabel)
{
    EXPECT_EQ(seriesLabels(PublishedChecks::indexOf({"a\"} 1", "b\n"})),
              "first=\"a\\\"} 1\",second=\"b\\\\xa\"");
}

TEST(SeriesLabels, DifferentRowsNeverHaveTheSameLabels)
{
    const QByteArray invalid = seriesLabels(PublishedChecks::indexOf({"a", "\xff"}));
    EXPECT_EQ(invalid, "first=\"a\",second=\"\\\\xffffffff\"");
    EXPECT_NE(invalid, seriesLabels(PublishedChecks::indexOf({"a", "\xfe"})));
    EXPECT_NE(invalid, seriesLabels(PublishedChecks::indexOf({"a", "\\xffffffff"})));
    EXPECT_NE(invalid, seriesLabels(ObjectId{1, 'a', 1, 0xff}));
    EXPECT_NE(seriesLabels(ObjectId{1, 'a', 2, 0xc3, 0xbc}),
              seriesLabels(PublishedChecks::indexOf({"a", "\xc3\xbc"})));
}

TEST(SeriesLabels, ADamagedIndexDoesNoHarm)
{
    EXPECT_EQ(seriesLabels(ObjectId()), "");
    EXPECT_EQ(seriesLabels(ObjectId{0xffff'ffff, 'a'}), "first=\"a\"");
}
