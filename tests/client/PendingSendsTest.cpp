// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/PendingSends.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/Oids.h"

using support::oid;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

void add(PendingSends& pending, const char* text, bool notify = false)
{
    pending.add(oid(text).toStdVector(), notify);
}

/// "1.2", "1.2 notify" or "1.2 tree". Empties it.
std::vector<std::string> takeAll(PendingSends& pending)
{
    std::vector<std::string> result;
    while (!pending.isEmpty()) {
        const auto [arcs, wish] = pending.first();
        result.push_back(Oid::fromStdVector(arcs).toStdString() + (wish.withdrawTree ? " tree" : "") +
                         (wish.notify ? " notify" : ""));
        pending.remove(arcs);
    }
    return result;
}

} // namespace

TEST(PendingSends, ComeOnceEachInTheOrderOfTheIdentifiers)
{
    PendingSends pending;
    for (const char* each : {"1.10", "1.9.1", "1.10", "1.9", "2"})
        add(pending, each);
    EXPECT_THAT(takeAll(pending), ElementsAreArray({"1.9", "1.9.1", "1.10", "2"}));
}

TEST(PendingSends, KeepTheWishForANotification)
{
    PendingSends pending;
    add(pending, "1", true);
    add(pending, "1", false);
    add(pending, "2", false);
    EXPECT_EQ(pending.notifications(), 1);
    EXPECT_THAT(takeAll(pending), ElementsAreArray({"1 notify", "2"}));
}

TEST(PendingSends, AWithdrawnTreeReplacesItsDescendants)
{
    PendingSends pending;
    for (const char* each : {"1.1", "1.2", "1.2.1", "1.2.1.7", "1.20", "1.3"})
        add(pending, each, true);
    pending.addTree(oid("1.2"));
    EXPECT_THAT(takeAll(pending), ElementsAreArray({"1.1 notify", "1.2 tree", "1.3 notify", "1.20 notify"}));
}

TEST(PendingSends, AValueOfTheTreeItselfKeepsItsWithdrawal)
{
    PendingSends pending;
    pending.addTree(oid("1"));
    add(pending, "1", true);
    EXPECT_THAT(takeAll(pending), ElementsAreArray({"1 tree notify"}));
}

TEST(PendingSends, ClearForgetsThemAll)
{
    PendingSends pending;
    add(pending, "1", true);
    pending.clear();
    EXPECT_EQ(pending.notifications(), 0);
    EXPECT_THAT(takeAll(pending), IsEmpty());
}
