// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/QueueOverflow.h"

#include <gmock/gmock.h>

#include <cstddef>

#include "support/PublicationText.h"

using support::publicationOf;
using support::textsOf;
using support::withdrawalOfTree;
using testing::ElementsAreArray;

TEST(QueueOverflow, KeepsAllPublicationsUpToANumberOfBytes)
{
    QueueOverflow overflow(10'000);
    EXPECT_TRUE(overflow.isEmpty());
    overflow.add(publicationOf("1", 1, true));
    EXPECT_FALSE(overflow.isEmpty());
    overflow.add(publicationOf("1", 2));
    overflow.add(withdrawalOfTree("1"));
    overflow.add(publicationOf("1", 3));
    EXPECT_THAT(textsOf(overflow), ElementsAreArray({"1=1 notify", "1=2", "1 tree", "1=3"}));
}

TEST(QueueOverflow, KeepsTheLastValueOfEachIdentifierBeyondThem)
{
    PublicationLog two;
    two.append(publicationOf("1", 1));
    two.append(publicationOf("1", 2));
    QueueOverflow overflow(two.bytes());
    overflow.add(publicationOf("1", 1));
    overflow.add(publicationOf("1", 2));
    overflow.add(publicationOf("1", 3, true));
    overflow.add(publicationOf("2", 4));
    overflow.add(publicationOf("1", 5));
    EXPECT_THAT(textsOf(overflow), ElementsAreArray({"1=1", "1=2", "2=4", "1=5 notify"}));
}

TEST(QueueOverflow, IsNotEmptyWithALatestPublicationAlone)
{
    constexpr std::size_t none = 0;
    QueueOverflow overflow(none);
    overflow.add(withdrawalOfTree("1"));
    EXPECT_FALSE(overflow.isEmpty());
    EXPECT_THAT(textsOf(overflow), ElementsAreArray({"1 tree"}));
}
