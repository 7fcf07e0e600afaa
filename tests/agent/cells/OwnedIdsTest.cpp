// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "agent/cells/OwnedIds.h"

using agent::ObjectId;
using agent::OwnedIds;

namespace {

std::vector<ObjectId> entries(const OwnedIds& ids, const ObjectId& tree = {})
{
    std::vector<ObjectId> result;
    for (const ObjectId* id : ids.within(tree))
        result.push_back(*id);
    return result;
}

} // namespace

TEST(OwnedIds, KeepsTheOrderOfTheIdentifiers)
{
    const ObjectId first{1}, second{1, 5}, third{2};
    OwnedIds ids;
    ids.insert(&third);
    ids.insert(&first);
    ids.insert(&second);
    EXPECT_EQ(entries(ids), (std::vector<ObjectId>{first, second, third}));
}

TEST(OwnedIds, FindsATreeAndItsRoot)
{
    const ObjectId before{1, 9}, root{2}, child{2, 1}, after{20};
    OwnedIds ids;
    for (const ObjectId* id : {&before, &root, &child, &after})
        ids.insert(id);
    EXPECT_EQ(entries(ids, {2}), (std::vector<ObjectId>{root, child}));
    EXPECT_EQ(entries(ids, {3}), std::vector<ObjectId>());
}

TEST(OwnedIds, FindsTheFirstOnesOfSeveralBlocks)
{
    std::vector<ObjectId> all;
    for (unsigned int arc = 0; arc < 200; ++arc)
        all.push_back({arc});
    OwnedIds ids;
    for (const ObjectId& id : all)
        ids.insert(&id);
    for (const size_t most : {size_t{0}, size_t{1}, size_t{150}, size_t{200}, size_t{201}}) {
        std::vector<ObjectId> found;
        for (const ObjectId* id : ids.first(most))
            found.push_back(*id);
        const auto end = all.begin() + static_cast<std::ptrdiff_t>(std::min(most, all.size()));
        EXPECT_EQ(found, std::vector<ObjectId>(all.begin(), end)) << most;
    }
}

TEST(OwnedIds, IsEmptyAtFirstAndInTheEnd)
{
    OwnedIds ids;
    EXPECT_EQ(entries(ids), std::vector<ObjectId>());
    const ObjectId id{1};
    ids.insert(&id);
    ids.erase(id);
    EXPECT_EQ(ids.size(), 0U);
    EXPECT_EQ(entries(ids), std::vector<ObjectId>());
}

/// Grows to thousands of entries, shrinks to a few, and grows again.
TEST(OwnedIds, HoldsTheSameAsASetAfterRandomChanges)
{
    constexpr int steps = 60'000;
    constexpr int phase = 10'000;
    std::mt19937 generator{43125};
    std::set<ObjectId> model;
    OwnedIds ids;
    for (int step = 0; step < steps; ++step) {
        const bool isGrowing = step / phase % 2 == 0;
        const ObjectId id{static_cast<unsigned int>(generator() % 50),
                          static_cast<unsigned int>(generator() % 200)};
        const auto known = model.lower_bound(id);
        if (isGrowing && model.count(id) == 0) {
            ids.insert(&*model.insert(id).first);
        } else if (!isGrowing && known != model.end()) {
            ids.erase(*known);
            model.erase(known);
        }
        if (step % 1'000 == 0) {
            ASSERT_EQ(entries(ids), std::vector<ObjectId>(model.begin(), model.end())) << "step " << step;
            const auto end = model.lower_bound({id.front() + 1});
            ASSERT_EQ(entries(ids, {id.front()}),
                      std::vector<ObjectId>(model.lower_bound({id.front()}), end));
        }
    }
    EXPECT_EQ(ids.size(), model.size());
}
