// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/applications/CellLimits.h"
#include "support/QtPrinters.h"

using agent::CellLimits;
using agent::CellStore;
using agent::CellValue;
using agent::ObjectId;

namespace {

class CellLimitsTest : public testing::Test
{
protected:
    static ObjectId withArcs(size_t count)
    {
        ObjectId id = agent::enterpriseRoot();
        id.resize(count, 7);
        return id;
    }

    static agent::Limits smallLimits()
    {
        agent::Limits limits;
        limits.cells = 2;
        limits.textBytes = 5;
        return limits;
    }

    QString cellError(const ObjectId& id, const agent::CellValue& value) const
    {
        const agent::Error error = CellLimits::checkIdentifier(id);
        return error ? error.text() : limits.checkText(id, value).text();
    }

    QString countError(agent::ApplicationId application, const ObjectId& id) const
    {
        return limits.checkCount(application, id).text();
    }

    CellStore store;
    const CellLimits limits{store, smallLimits()};
};

} // namespace

TEST_F(CellLimitsTest, AnIdentifierHasAtMost128Arcs)
{
    EXPECT_EQ(cellError(withArcs(8), 1), QString());
    EXPECT_EQ(cellError(withArcs(128), 1), QString());
    EXPECT_TRUE(cellError(withArcs(129), 1).contains(QStringLiteral("129 arcs")));
}

TEST_F(CellLimitsTest, AnIdentifierLiesBelowTheRoot)
{
    EXPECT_TRUE(cellError(agent::enterpriseRoot(), 1).contains(QStringLiteral("without an identifier")));
}

TEST_F(CellLimitsTest, ApplicationsCannotPublishTheAgentsOwnObjects)
{
    ObjectId id = agent::agentMibRoot();
    id.push_back(1);
    EXPECT_TRUE(cellError(id, 1).contains(QStringLiteral("agent's own objects")));
}

TEST_F(CellLimitsTest, TheErrorAboutALongIdentifierIsShort)
{
    const QString error = cellError(withArcs(30'000), 1);
    EXPECT_LT(error.size(), 1000);
    EXPECT_TRUE(error.endsWith(QStringLiteral(".7.7 ...")));
}

TEST_F(CellLimitsTest, ALongerTextIsReportedAndCut)
{
    EXPECT_EQ(cellError(withArcs(9), std::string("12345")), QString());
    EXPECT_TRUE(cellError(withArcs(9), std::string("123456")).contains(QStringLiteral("--max-text")));
    EXPECT_EQ(limits.cutText(std::string("12345")), CellValue(std::string("12345")));
    EXPECT_EQ(limits.cutText(std::string("123456")), CellValue(std::string("12345")));
    EXPECT_EQ(limits.cutText(123456), CellValue(123456));
}

TEST_F(CellLimitsTest, AnApplicationOwnsAtMostTheLimitOfCells)
{
    store.set(withArcs(9), 1, 1);
    EXPECT_EQ(countError(1, withArcs(10)), QString());
    store.set(withArcs(10), 1, 1);
    EXPECT_TRUE(countError(1, withArcs(11)).contains(QStringLiteral("--max-cells")));
    EXPECT_EQ(countError(2, withArcs(11)), QString());
}

TEST_F(CellLimitsTest, AnApplicationAtTheLimitCanStillChangeItsOwnCells)
{
    store.set(withArcs(9), 1, 1);
    store.set(withArcs(10), 1, 1);
    EXPECT_EQ(countError(1, withArcs(10)), QString());
}

TEST_F(CellLimitsTest, AnApplicationAtTheLimitCannotTakeOverCells)
{
    store.set(withArcs(9), 1, 1);
    store.set(withArcs(10), 1, 1);
    store.set(withArcs(12), 1, 2);
    EXPECT_NE(countError(1, withArcs(12)), QString());
}
