// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/applications/CellLimits.h"

using agent::CellLimits;
using agent::CellStore;
using agent::ObjectId;

namespace {

ObjectId withArcs(size_t count)
{
    ObjectId id = agent::enterpriseRoot();
    id.resize(count, 7);
    return id;
}

agent::Limits limits()
{
    agent::Limits limits;
    limits.cells = 2;
    limits.textBytes = 5;
    return limits;
}

} // namespace

TEST(CellLimits, AnIdentifierHasAtMost128Arcs)
{
    const CellStore store;
    const CellLimits cellLimits(store, limits());
    EXPECT_EQ(cellLimits.cellProblem(withArcs(8), 1), QString());
    EXPECT_EQ(cellLimits.cellProblem(withArcs(128), 1), QString());
    EXPECT_TRUE(cellLimits.cellProblem(withArcs(129), 1).contains(QStringLiteral("129 arcs")));
}

TEST(CellLimits, AnIdentifierLiesBelowTheRoot)
{
    const CellStore store;
    const CellLimits cellLimits(store, limits());
    EXPECT_FALSE(cellLimits.cellProblem(agent::enterpriseRoot(), 1).isEmpty());
}

TEST(CellLimits, TheMessageAboutALongIdentifierIsShort)
{
    const CellStore store;
    const CellLimits cellLimits(store, limits());
    EXPECT_LT(cellLimits.cellProblem(withArcs(30'000), 1).size(), 1000);
}

TEST(CellLimits, ATextIsNotLongerThanTheLimit)
{
    const CellStore store;
    const CellLimits cellLimits(store, limits());
    EXPECT_EQ(cellLimits.cellProblem(withArcs(9), std::string("12345")), QString());
    EXPECT_TRUE(
        cellLimits.cellProblem(withArcs(9), std::string("123456")).contains(QStringLiteral("--max-text")));
}

TEST(CellLimits, AnOwnerOfAsManyCellsAsAllowedGetsNoMore)
{
    CellStore store;
    const CellLimits cellLimits(store, limits());
    store.set(withArcs(9), 1, 1);
    EXPECT_EQ(cellLimits.countProblem(1, withArcs(10)), QString());
    store.set(withArcs(10), 1, 1);
    store.set(withArcs(12), 1, 2);
    EXPECT_TRUE(cellLimits.countProblem(1, withArcs(11)).contains(QStringLiteral("--max-cells")));
    EXPECT_FALSE(cellLimits.countProblem(1, withArcs(12)).isEmpty()) << "taking over counts as well";
    EXPECT_EQ(cellLimits.countProblem(1, withArcs(10)), QString()) << "its own cells may change";
    EXPECT_EQ(cellLimits.countProblem(2, withArcs(11)), QString());
}
