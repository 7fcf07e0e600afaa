// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/cells/CellStore.h"

using agent::CellStore;
using agent::Cover;
using agent::ObjectId;

TEST(CellStore, HoldsValuesOfBothTypes)
{
    CellStore store;
    store.set({1, 1}, 5, 1);
    store.set({1, 2}, std::string("five"), 1);
    EXPECT_EQ(std::get<int>(store.find({1, 1})->value), 5);
    EXPECT_EQ(std::get<std::string>(store.find({1, 2})->value), "five");
    EXPECT_EQ(store.find({1}), nullptr);
    EXPECT_EQ(store.find({1, 1, 0}), nullptr);
}

// The store keeps the last cell it has found.
TEST(CellStore, FindsNoCellThatHasGone)
{
    CellStore store;
    store.set({1, 1}, 1, 7);
    store.set({1, 2}, 2, 7);
    ASSERT_NE(store.find({1, 1}), nullptr);
    store.unsetTree({1, 1}, 7);
    EXPECT_EQ(store.find({1, 1}), nullptr);
    store.uncover({1, 1});
    store.set({1, 1}, 3, 8);
    EXPECT_EQ(std::get<int>(store.find({1, 1})->value), 3);
    ASSERT_NE(store.find({1, 2}), nullptr);
    store.removeAllOf(7);
    EXPECT_EQ(store.set({1, 2}, 4, 8), std::nullopt);
    EXPECT_EQ(store.find({1, 2})->owner, 8u);
    EXPECT_EQ(store.size(), 2u);
}

TEST(CellStore, IsOrderedByArcsNotByText)
{
    CellStore store;
    for (const ObjectId& id : {ObjectId{1, 10}, ObjectId{1, 9}, ObjectId{1, 9, 1}, ObjectId{1, 4294967295u}})
        store.set(id, 0, 1);
    EXPECT_EQ(store.findNext({1})->first, (ObjectId{1, 9}));
    EXPECT_EQ(store.findNext({1, 9})->first, (ObjectId{1, 9, 1}));
    EXPECT_EQ(store.findNext({1, 9, 1})->first, (ObjectId{1, 10}));
    EXPECT_EQ(store.findNext({1, 10})->first, (ObjectId{1, 4294967295u}));
    EXPECT_EQ(store.findNext({1, 4294967295u}), nullptr);
}

TEST(CellStore, FindAtOrNextIncludesTheCellItself)
{
    CellStore store;
    store.set({1, 9}, 0, 1);
    EXPECT_EQ(store.findAtOrNext({1, 9})->first, (ObjectId{1, 9}));
    EXPECT_EQ(store.findAtOrNext({1, 8})->first, (ObjectId{1, 9}));
    EXPECT_EQ(store.findAtOrNext({1, 9, 0}), nullptr);
}

TEST(CellStore, TheLastWriterOwnsTheCell)
{
    CellStore store;
    EXPECT_EQ(store.set({1}, 1, 7), std::nullopt);
    EXPECT_EQ(store.set({1}, 2, 7), std::nullopt);
    EXPECT_EQ(store.set({1}, 3, 8), std::optional<agent::ApplicationId>(7));
    EXPECT_EQ(store.find({1})->owner, 8u);
    EXPECT_EQ(store.size(), 1u);
}

TEST(CellStore, AnUnsetRemovesOnlyCellsOfItsSender)
{
    CellStore store;
    store.set({1, 3}, 0, 1);
    store.set({1, 3, 5}, 0, 1);
    store.set({1, 3, 6}, 0, 2);
    store.set({1, 30}, 0, 1);
    EXPECT_EQ(store.unsetTree({1, 3}, 1).size(), 2u);
    EXPECT_EQ(store.find({1, 3}), nullptr);
    EXPECT_EQ(store.find({1, 3, 5}), nullptr);
    EXPECT_NE(store.find({1, 3, 6}), nullptr);
    EXPECT_NE(store.find({1, 30}), nullptr);
    EXPECT_EQ(store.unsetTree({1, 3}, 1).size(), 0u);
}

TEST(CellStore, AnUnsetByAFormerOwnerRemovesNothing)
{
    CellStore store;
    store.set({1}, 0, 1);
    store.set({1}, 0, 2);
    EXPECT_EQ(store.unsetTree({1}, 1).size(), 0u);
    EXPECT_EQ(store.unsetTree({1}, 2).size(), 1u);
}

TEST(CellStore, RemovesAllCellsOfAnApplication)
{
    CellStore store;
    store.set({1}, 0, 1);
    store.set({2}, 0, 2);
    store.set({3}, 0, 1);
    EXPECT_EQ(store.removeAllOf(1).size(), 2u);
    EXPECT_EQ(store.removeAllOf(1).size(), 0u);
    EXPECT_EQ(store.size(), 1u);
    EXPECT_NE(store.find({2}), nullptr);
}

TEST(CellStore, RemovesTheFirstCellsOfAnApplication)
{
    CellStore store;
    for (unsigned int arc = 1; arc <= 4; ++arc)
        store.set({arc}, 1, 1 + arc % 2);
    const std::vector<ObjectId> first = store.firstOf(1, 1);
    EXPECT_EQ(first, std::vector<ObjectId>{{2}});
    store.remove(1, first);
    EXPECT_EQ(store.firstOf(1, 9), std::vector<ObjectId>{{4}});
    store.remove(1, {{4}});
    EXPECT_EQ(store.countOf(1), 0u);
    EXPECT_EQ(store.memoryOf(1), 0u);
    EXPECT_EQ(store.firstOf(1, 9), std::vector<ObjectId>());
    EXPECT_EQ(store.size(), 2u);
}

TEST(CellStore, ServesACommittedValueUntilTheOwnerPublishes)
{
    CellStore store;
    store.set({1}, 1, 7);
    store.commit({1}, 2);
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 2);
    EXPECT_EQ(store.find({1})->owner, 7u);
    store.set({1}, 3, 7);
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 3);
    store.commit({2}, 2);
    EXPECT_EQ(store.size(), 1u);
}

TEST(CellStore, DropsTheCommittedValuesOfOneApplication)
{
    CellStore store;
    store.set({1}, 1, 7);
    store.set({2}, 1, 8);
    store.set({3}, 1, 7);
    store.cover({3}, {3, Cover::Reason::Stale});
    store.commit({1}, 2);
    store.commit({2}, 2);
    store.dropCommitted(7);
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 1);
    EXPECT_EQ(std::get<int>(store.find({2})->served()), 2);
    EXPECT_EQ(std::get<int>(store.find({3})->served()), 3) << "another cover";
}

TEST(CellStore, ServesTheCoverUntilItIsRemoved)
{
    CellStore store;
    store.set({1}, 0, 7);
    store.cover({1}, {3, Cover::Reason::Stale});
    store.set({1}, 1, 7);
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 3);
    EXPECT_EQ(std::get<int>(store.find({1})->value), 1);
    store.uncover({1});
    EXPECT_EQ(std::get<int>(store.find({1})->served()), 1);
}

TEST(CellStore, ACoverNeedsACell)
{
    CellStore store;
    store.cover({1}, {3, Cover::Reason::Stale});
    store.uncover({1});
    EXPECT_EQ(store.size(), 0u);
}

TEST(CellStore, CountsTheCellsOfAnApplication)
{
    CellStore store;
    store.set({1}, 0, 7);
    store.set({2}, 0, 7);
    store.set({2}, 0, 8);
    EXPECT_EQ(store.countOf(7), 1u);
    EXPECT_EQ(store.countOf(8), 1u);
    EXPECT_EQ(store.countOf(9), 0u);
}

TEST(CellStore, AnUnsetReturnsTheRemovedCells)
{
    CellStore store;
    store.set({1, 1}, 0, 7);
    store.set({1, 2}, 0, 7);
    store.set({2}, 0, 7);
    EXPECT_EQ(store.unsetTree({1}, 7), (std::vector<ObjectId>{{1, 1}, {1, 2}}));
}
