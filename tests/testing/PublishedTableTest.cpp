// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <sstream>

#include <vigil/testing/PublishedTable.h>

#include "support/Publications.h"

using support::cell;
using vigil::HealthStatus;
using vigil::test::PublishedCell;
using vigil::test::PublishedCheck;
using vigil::test::PublishedMetric;
using vigil::test::PublishedTable;

namespace {

PublishedCell number(int value)
{
    PublishedCell result;
    result.number = value;
    return result;
}

PublishedCell text(const std::string& value)
{
    PublishedCell result;
    result.isText = true;
    result.text = value;
    return result;
}

class Cells
{
public:
    void add(int table, int column, const std::vector<std::string>& row, const PublishedCell& value)
    {
        m_cells["1.3.6.1.4.1.32473." + cell(table, column, row)] = value;
    }

    void addCheck(const std::string& first, const std::string& second, HealthStatus status)
    {
        add(1, 3, {first, second}, number(static_cast<int>(status)));
        add(1, 4, {first, second}, text("a summary"));
    }

    PublishedTable table() const { return PublishedTable(m_cells, 1); }

    PublishedTable::Cells m_cells;
};

std::string shown(const PublishedTable& table)
{
    std::ostringstream out;
    out << table;
    return out.str();
}

} // namespace

TEST(PublishedTable, HasChecksAndMetricsByTheirNames)
{
    Cells cells;
    cells.addCheck("shop", "orders", HealthStatus::Warning);
    const std::vector<std::string> row = {"shop", "orders", "pending"};
    cells.add(2, 2, row, text("s"));
    cells.add(2, 3, row, text("~:40"));
    cells.add(2, 4, row, text("~:80"));
    cells.add(2, 5, row, number(1));
    cells.add(3, 1, row, number(1));
    cells.add(3, 2, row, text("pending is 42"));
    cells.add(4, 2, row, text("42"));
    cells.add(5, 1, {"shop", "orders"}, number(1));
    const PublishedTable table = cells.table();

    const PublishedCheck* check = table.check("shop", "orders");
    ASSERT_NE(check, nullptr);
    EXPECT_EQ(check->status, HealthStatus::Warning);
    EXPECT_EQ(check->summary, "a summary");
    EXPECT_TRUE(check->hasFunctions);
    const PublishedMetric* metric = check->metric("pending");
    ASSERT_NE(metric, nullptr);
    EXPECT_EQ(metric->status, HealthStatus::Warning);
    EXPECT_EQ(metric->summary, "pending is 42");
    EXPECT_EQ(metric->value, "42");
    EXPECT_EQ(metric->unit, "s");
    EXPECT_EQ(metric->warningRange, "~:40");
    EXPECT_EQ(metric->criticalRange, "~:80");
    EXPECT_TRUE(metric->acceptsRanges);
    EXPECT_EQ(check->metric("other"), nullptr);
    EXPECT_EQ(table.check("shop", "other"), nullptr);
}

TEST(PublishedTable, KeysMayHaveAnyBytes)
{
    for (const std::string& key :
         {std::string("gr\xC3\xBC\xC3\x9F"), std::string("a.b/c d"), std::string()}) {
        Cells cells;
        cells.addCheck(key, key, HealthStatus::Ok);
        EXPECT_NE(cells.table().check(key, key), nullptr) << shown(cells.table());
    }
}

TEST(PublishedTable, AMetricWithoutItsCheckIsNoCheck)
{
    Cells cells;
    cells.add(2, 2, {"shop", "orders", "pending"}, text("s"));
    EXPECT_TRUE(cells.table().checks().empty());
    EXPECT_EQ(cells.table().cells().size(), 1u);
}

TEST(PublishedTable, IsShownAsATable)
{
    Cells cells;
    cells.addCheck("shop", "orders", HealthStatus::Critical);
    cells.add(4, 2, {"shop", "orders", "pending"}, text("42"));
    cells.m_cells["1.3.6.1.4.1.32473.1.0"] = text("own");
    EXPECT_EQ(shown(cells.table()),
              "\ncheck        metric   status    value  unit  warning  critical  summary"
              "\nshop/orders           CRITICAL                                  a summary"
              "\n             pending  UNKNOWN   42"
              "\n1.3.6.1.4.1.32473.1.0 = \"own\"");
}

TEST(PublishedTable, SaysWhyItIsEmpty)
{
    EXPECT_EQ(shown(PublishedTable()), "nothing: no application is connected");
    EXPECT_EQ(shown(PublishedTable({}, 1)),
              "nothing: the application is connected and has published nothing");
}
