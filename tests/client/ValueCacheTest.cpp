// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ValueCache.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/Oids.h"

using support::oid;
using testing::ElementsAreArray;
using testing::IsEmpty;
using vigil::Oid;

namespace {

vigil::OidArcs arcs(const char* text)
{
    return oid(text).toStdVector();
}

/// "1.2=5", or "1.2 unset".
std::vector<std::string> entries(const ValueCache& cache)
{
    std::vector<std::string> result;
    for (const auto& [key, value] : cache)
        result.push_back(Oid::fromStdVector(key).toStdString() +
                         (value.isValid() ? "=" + value.toString().toStdString() : " unset"));
    return result;
}

} // namespace

TEST(ValueCache, KeepsTheLastValueOfEachIdentifierInTheOrderOfTheIdentifiers)
{
    ValueCache cache;
    cache.set(arcs("1.10"), 1);
    cache.set(arcs("1.9"), 2);
    cache.set(arcs("1.10"), 3);
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.9=2", "1.10=3"}));
}

TEST(ValueCache, AnUnsetIdentifierStaysAsUnset)
{
    ValueCache cache;
    cache.set(arcs("1.1"), 1);
    cache.set(arcs("1.1"), QVariant());
    cache.set(arcs("1.2"), QVariant());
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.1 unset", "1.2 unset"}));
}

TEST(ValueCache, ARemovedTreeWithDescendantsStaysAsUnset)
{
    ValueCache cache;
    cache.set(arcs("1.1"), 1);
    cache.set(arcs("1.2.1"), 2);
    cache.set(arcs("1.2.2.1"), 3);
    cache.set(arcs("1.3"), 4);
    EXPECT_EQ(cache.removeTree(oid("1.2")), 2);
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.1=1", "1.2 unset", "1.3=4"}));
}

TEST(ValueCache, TheValueOfTheTreeItselfCounts)
{
    ValueCache cache;
    cache.set(arcs("1.2"), 1);
    cache.set(arcs("1.2.1"), 2);
    EXPECT_EQ(cache.removeTree(oid("1.2")), 2);
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.2 unset"}));
}

TEST(ValueCache, ATreeWithoutDescendantsLeavesNothing)
{
    ValueCache cache;
    cache.set(arcs("1.2"), 1);
    EXPECT_EQ(cache.removeTree(oid("1.2")), 1);
    EXPECT_THAT(entries(cache), IsEmpty());
}

TEST(ValueCache, RemovingAnUnknownTreeChangesNothing)
{
    ValueCache cache;
    cache.set(arcs("1.20"), 1);
    EXPECT_EQ(cache.removeTree(oid("1.2")), 0);
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.20=1"}));
}

TEST(ValueCache, ARemovedIdentifierCanBeSetAgain)
{
    ValueCache cache;
    cache.set(arcs("1.2.1"), 1);
    cache.removeTree(oid("1.2"));
    cache.set(arcs("1.2.1"), 2);
    cache.set(arcs("1.2.1"), 3);
    cache.set(arcs("1.2"), 4);
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.2=4", "1.2.1=3"}));
    EXPECT_EQ(cache.removeTree(oid("1.2")), 2);
    EXPECT_THAT(entries(cache), ElementsAreArray({"1.2 unset"}));
}
