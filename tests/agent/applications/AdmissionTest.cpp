// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/applications/Admission.h"

using agent::Admission;
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

TEST(Admission, AnIdentifierHasAtMost128Arcs)
{
    const CellStore store;
    const Admission admission(store, limits());
    EXPECT_EQ(admission.cellProblem(withArcs(8), 1), QString());
    EXPECT_EQ(admission.cellProblem(withArcs(128), 1), QString());
    EXPECT_TRUE(admission.cellProblem(withArcs(129), 1).contains(QStringLiteral("129 arcs")));
}

TEST(Admission, AnIdentifierLiesBelowTheRoot)
{
    const CellStore store;
    const Admission admission(store, limits());
    EXPECT_FALSE(admission.cellProblem(agent::enterpriseRoot(), 1).isEmpty());
}

TEST(Admission, TheMessageAboutALongIdentifierIsShort)
{
    const CellStore store;
    const Admission admission(store, limits());
    EXPECT_LT(admission.cellProblem(withArcs(30'000), 1).size(), 1000);
}

TEST(Admission, ATextIsNotLongerThanTheLimit)
{
    const CellStore store;
    const Admission admission(store, limits());
    EXPECT_EQ(admission.cellProblem(withArcs(9), std::string("12345")), QString());
    EXPECT_TRUE(
        admission.cellProblem(withArcs(9), std::string("123456")).contains(QStringLiteral("--max-text")));
}

TEST(Admission, AnOwnerOfAsManyCellsAsAllowedGetsNoMore)
{
    CellStore store;
    const Admission admission(store, limits());
    store.set(withArcs(9), 1, 1);
    EXPECT_EQ(admission.countProblem(1, withArcs(10)), QString());
    store.set(withArcs(10), 1, 1);
    store.set(withArcs(12), 1, 2);
    EXPECT_TRUE(admission.countProblem(1, withArcs(11)).contains(QStringLiteral("--max-cells")));
    EXPECT_FALSE(admission.countProblem(1, withArcs(12)).isEmpty()) << "taking over counts as well";
    EXPECT_EQ(admission.countProblem(1, withArcs(10)), QString()) << "its own cells may change";
    EXPECT_EQ(admission.countProblem(2, withArcs(11)), QString());
}
