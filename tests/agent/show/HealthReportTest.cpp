// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/show/HealthReport.h"

#include <gtest/gtest.h>

#include "support/QtPrinters.h"

using agent::ObjectId;
using agent::ServedObjects;

namespace {

class HealthReport : public testing::Test
{
protected:
    void setNumber(std::initializer_list<unsigned int> arcs, std::int64_t number)
    {
        objects[agent::below(agent::agentMibRoot(), arcs)] = {number, {}};
    }

    void setText(std::initializer_list<unsigned int> arcs, const std::string& text)
    {
        objects[agent::below(agent::agentMibRoot(), arcs)] = {0, text};
    }

    void addCheck(unsigned int number, const std::string& name, int status, int severity)
    {
        setText({4, 1, 4, number}, name);
        setNumber({4, 1, 5, number}, status);
        setNumber({4, 1, 6, number}, severity);
        setText({4, 1, 7, number}, "Summary of " + name);
        setText({4, 1, 8, number}, std::string("\x07\xea\x01\x1f\x0c\x22\x38\0", 8));
    }

    void addMetric(unsigned int check, unsigned int number, const std::string& name, int status,
                   const std::string& value, const std::string& unit)
    {
        setText({5, 1, 2, check, number}, name);
        setNumber({5, 1, 3, check, number}, status);
        setText({5, 1, 5, check, number}, value);
        setText({5, 1, 8, check, number}, unit);
    }

    QString report() const { return agent::healthReport(objects); }

    ServedObjects objects;
};

} // namespace

TEST_F(HealthReport, SaysWhenThereIsNothing)
{
    setNumber({3, 6, 0}, 3);
    EXPECT_EQ(report(), QStringLiteral("UNKNOWN - 0 critical, 0 warning, 0 unknown, 0 ok\n\n"
                                       "No application has published a health check.\n\n"
                                       "No application is connected.\n"));
}

TEST_F(HealthReport, ShowsTheWorstCheckFirstWithItsMetrics)
{
    setNumber({3, 2, 0}, 1);
    setNumber({3, 3, 0}, 1);
    setNumber({3, 6, 0}, 1);
    addCheck(1, "shop/disk", 0, 0);
    addCheck(2, "shop/orders", 1, 2);
    addMetric(2, 1, "shop/orders/pending", 1, "950", "");
    addMetric(2, 2, "shop/orders/rate", 0, "12", "/s");
    addMetric(2, 3, "shop/orders/state", 0, "", "");
    EXPECT_EQ(report(),
              QStringLiteral("WARNING - 0 critical, 1 warning, 0 unknown, 1 ok\n\n"
                             "WARNING   shop/orders since 2026-01-31 12:34:56 UTC: Summary of shop/orders\n"
                             "  WARNING   pending = 950\n"
                             "  OK        rate = 12 /s\n"
                             "  OK        state\n"
                             "OK        shop/disk since 2026-01-31 12:34:56 UTC: Summary of shop/disk\n\n"
                             "No application is connected.\n"));
}

TEST_F(HealthReport, ShowsApplications)
{
    for (const unsigned int application : {1U, 2U}) {
        setNumber({2, 1, 4, application}, application);
        setNumber({2, 1, 6, application}, 24);
        setText({2, 1, 13, application}, "application " + std::to_string(application));
    }
    EXPECT_TRUE(report().endsWith(
        QStringLiteral("\napplication 1 is connected, 24 cells\napplication 2 is lost, 24 cells\n")));
}

TEST_F(HealthReport, LetsNoTextControlTheTerminal)
{
    addCheck(1, "a\x1b[2J\nb", 0, 0);
    EXPECT_FALSE(report().contains(QLatin1Char('\x1b')));
    EXPECT_EQ(report().count(QLatin1Char('\n')), 5);
}

TEST_F(HealthReport, EndsWithAnIncompleteAnswer)
{
    setNumber({4, 1, 5, 1}, 2);
    EXPECT_TRUE(report().contains(QStringLiteral("CRITICAL   since : \n"))) << qPrintable(report());
}

// The report took the first arc of an empty index.
TEST_F(HealthReport, AnObjectWithoutAnIndexDoesNoHarm)
{
    addCheck(7, "shop/web", 0, 0);
    setNumber({4, 1, 5}, 0);
    setText({5, 1, 2}, "shop/web/rate");
    EXPECT_TRUE(report().contains(QStringLiteral("OK        shop/web since"))) << qPrintable(report());
}
