// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/LatestPublications.h"

#include <gmock/gmock.h>

#include <QVariant>

#include <string>
#include <vector>

#include "support/PublicationText.h"

using support::publicationOf;
using support::withdrawalOfTree;
using testing::ElementsAreArray;

namespace {

std::vector<std::string> textsOf(const LatestPublications& latest)
{
    std::vector<std::string> texts;
    for (const Publication& publication : latest.all())
        texts.push_back(support::textOf(publication));
    return texts;
}

} // namespace

TEST(LatestPublications, AreTheLastValuesOfTheIdentifiersInTheOrderOfPublishing)
{
    LatestPublications latest;
    latest.add(publicationOf("1.2", 1));
    latest.add(publicationOf("1.1", 2));
    latest.add(publicationOf("1.3", QVariant()));
    latest.add(publicationOf("1.2", QStringLiteral("text")));
    EXPECT_THAT(textsOf(latest), ElementsAreArray({"1.1=2", "1.3 unset", "1.2=text"}));
}

TEST(LatestPublications, KeepTheWishForANotification)
{
    LatestPublications latest;
    latest.add(publicationOf("1", 1, true));
    latest.add(publicationOf("1", QVariant()));
    latest.add(publicationOf("1", 2));
    EXPECT_THAT(textsOf(latest), ElementsAreArray({"1=2 notify"}));
}

TEST(LatestPublications, AWithdrawnTreeReplacesEverythingInIt)
{
    LatestPublications latest;
    latest.add(publicationOf("1.2", 1));
    latest.add(publicationOf("1.2.1", 2));
    latest.add(withdrawalOfTree("1.2.7"));
    latest.add(publicationOf("1.20", 3));
    latest.add(withdrawalOfTree("1.2"));
    EXPECT_THAT(textsOf(latest), ElementsAreArray({"1.20=3", "1.2 tree"}));
}

TEST(LatestPublications, ValuesPublishedAfterTheWithdrawalOfTheirTreeComeAfterIt)
{
    LatestPublications latest;
    latest.add(withdrawalOfTree("1.2"));
    latest.add(publicationOf("1.2.1", 2));
    latest.add(publicationOf("1.2", 1));
    EXPECT_THAT(textsOf(latest), ElementsAreArray({"1.2 tree", "1.2.1=2", "1.2=1"}));
}

TEST(LatestPublications, AWithdrawnTreeEndsTheWishForANotification)
{
    LatestPublications latest;
    latest.add(publicationOf("1.2", 1, true));
    latest.add(withdrawalOfTree("1"));
    latest.add(publicationOf("1.2", 2));
    EXPECT_THAT(textsOf(latest), ElementsAreArray({"1 tree", "1.2=2"}));
}
