// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/QueueOverflow.h"

#include <gmock/gmock.h>

#include <QVariant>

#include <string>
#include <vector>

#include "support/Oids.h"

using support::oid;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

constexpr int nothing = 0;

/// "1.2=5", "1.2=5 notify", "1.2 unset" or "1.2 tree".
std::vector<std::string> takeAll(QueueOverflow& overflow)
{
    std::vector<std::string> result;
    for (const QueueOverflow::Publication& each : overflow.takeAll()) {
        std::string line = Oid::fromStdVector(each.oid).toStdString();
        if (each.kind == QueueOverflow::Publication::Kind::TreeWithdrawal)
            line += " tree";
        else if (each.value.isValid())
            line += "=" + each.value.toString().toStdString();
        else
            line += " unset";
        result.push_back(line + (each.notify ? " notify" : ""));
    }
    return result;
}

} // namespace

TEST(QueueOverflow, KeepsTheLastValueOfEachIdentifierInTheOrderOfPublishing)
{
    QueueOverflow overflow(nothing);
    overflow.set(oid("1.2"), 1, false, 1);
    overflow.set(oid("1.1"), 2, false, 1);
    overflow.set(oid("1.3"), QVariant(), false, 1);
    overflow.set(oid("1.2"), QStringLiteral("text"), false, 1);
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1.1=2", "1.3 unset", "1.2=text"}));
    EXPECT_TRUE(overflow.isEmpty());
    EXPECT_THAT(takeAll(overflow), IsEmpty());
}

TEST(QueueOverflow, KeepsTheWishForANotification)
{
    QueueOverflow overflow(nothing);
    overflow.set(oid("1"), 1, true, 1);
    overflow.set(oid("1"), QVariant(), false, 1);
    overflow.set(oid("1"), 2, false, 1);
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1=2 notify"}));
}

TEST(QueueOverflow, AWithdrawnTreeReplacesEverythingInIt)
{
    QueueOverflow overflow(nothing);
    overflow.set(oid("1.2"), 1, false, 1);
    overflow.set(oid("1.2.1"), 2, false, 1);
    overflow.withdrawTree(oid("1.2.7"));
    overflow.set(oid("1.20"), 3, false, 1);
    overflow.withdrawTree(oid("1.2"));
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1.20=3", "1.2 tree"}));
}

TEST(QueueOverflow, ValuesPublishedAfterTheWithdrawalOfTheirTreeComeAfterIt)
{
    QueueOverflow overflow(nothing);
    overflow.withdrawTree(oid("1.2"));
    overflow.set(oid("1.2.1"), 2, false, 1);
    overflow.set(oid("1.2"), 1, false, 1);
    EXPECT_FALSE(overflow.isEmpty());
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1.2 tree", "1.2.1=2", "1.2=1"}));
}

TEST(QueueOverflow, AWithdrawnTreeAloneIsKept)
{
    QueueOverflow overflow(nothing);
    overflow.withdrawTree(oid("1"));
    EXPECT_FALSE(overflow.isEmpty());
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1 tree"}));
}

TEST(QueueOverflow, KeepsAllPublicationsUpToANumberOfBytes)
{
    QueueOverflow overflow(3);
    overflow.set(oid("1"), 1, true, 1);
    overflow.set(oid("1"), 2, false, 1);
    overflow.withdrawTree(oid("1"));
    overflow.set(oid("1"), 3, false, 1);
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1=1 notify", "1=2", "1 tree", "1=3"}));
}

TEST(QueueOverflow, ReplacesOnlyTheLastPublicationBeyondThem)
{
    QueueOverflow overflow(2);
    overflow.set(oid("1"), 1, false, 1);
    overflow.set(oid("1"), 2, true, 1);
    overflow.set(oid("1"), 3, false, 1);
    overflow.set(oid("2"), 4, false, 1);
    overflow.set(oid("1"), 5, false, 1);
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1=1", "2=4", "1=5 notify"}));
}

TEST(QueueOverflow, AWithdrawnTreeEndsTheWishForANotification)
{
    QueueOverflow overflow(1);
    overflow.set(oid("1.2"), 1, true, 1);
    overflow.withdrawTree(oid("1"));
    overflow.set(oid("1.2"), 2, false, 1);
    EXPECT_THAT(takeAll(overflow), ElementsAreArray({"1.2=1 notify", "1 tree", "1.2=2"}));
}
