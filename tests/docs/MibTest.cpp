// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpTool;

namespace {

const QString lastCell = QStringLiteral("VIGIL-MIB::vigilMgmFuncTrigger4.\"app\".\"hc\"");
const char* const prefix = "127.3.1.200.4.";

void publish(FakeApplication& application, const std::string& column, const std::string& index, int value)
{
    application.publish(prefix + column + '.' + index, value);
}

void publish(FakeApplication& application, const std::string& column, const std::string& index,
             const char* value)
{
    application.publish(prefix + column + '.' + index, std::string(value));
}

/// A row of each table, as an application publishes it: check "app"/"hc", metric "m".
void publishAllTables(FakeApplication& application)
{
    const std::string check = "3.97.112.112.2.104.99";
    const std::string metric = check + ".1.109";
    publish(application, "1.1.3", check, 1);
    publish(application, "1.1.4", check, "m is high");
    publish(application, "2.1.2", metric, "MB");
    publish(application, "2.1.3", metric, "10:20");
    publish(application, "2.1.4", metric, "~:30");
    publish(application, "2.1.5", metric, 1);
    publish(application, "3.1.1", metric, 2);
    publish(application, "3.1.2", metric, "too high");
    publish(application, "4.1.1", metric, "memory");
    publish(application, "4.1.2", metric, "25.5");
    publish(application, "4.1.3", metric, "MB");
    publish(application, "4.1.4", metric, "10:20");
    publish(application, "4.1.5", metric, "~:30");
    publish(application, "5.1.5", check, "");
    for (const char* column : {"5.1.1", "5.1.2", "5.1.3", "5.1.4"})
        publish(application, column, check, 1);
}

} // namespace

TEST(VigilMib, NamesEveryObjectWhereTheApplicationsPublishIt)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    publishAllTables(application);
    ASSERT_TRUE(tool.waitFor(lastCell, QStringLiteral("1"))) << agent.log().constData();
    const SnmpTool::Result walk = tool.run(QStringLiteral("snmpwalk"),
                                           {QStringLiteral("VIGIL-MIB::vigilMIB")}, {QStringLiteral("-OQs")});
    EXPECT_EQ(walk.err, QString());
    EXPECT_EQ(walk.out, QStringLiteral(R"(vigilHealthCheckStatus."app"."hc" = warning
vigilHealthCheckSummary."app"."hc" = m is high
vigilMetricUnit."app"."hc"."m" = MB
vigilMetricWarningRange."app"."hc"."m" = 10:20
vigilMetricCriticalRange."app"."hc"."m" = ~:30
vigilMetricRemoteChange."app"."hc"."m" = allowed
vigilMetricResultStatus."app"."hc"."m" = critical
vigilMetricResultSummary."app"."hc"."m" = too high
vigilPerfDataLabel."app"."hc"."m" = memory
vigilPerfDataValue."app"."hc"."m" = 25.5
vigilPerfDataUnit."app"."hc"."m" = MB
vigilPerfDataWarning."app"."hc"."m" = 10:20
vigilPerfDataCritical."app"."hc"."m" = ~:30
vigilMgmFuncTrigger1."app"."hc" = idle
vigilMgmFuncTrigger2."app"."hc" = idle
vigilMgmFuncTrigger3."app"."hc" = idle
vigilMgmFuncTrigger4."app"."hc" = idle
vigilMgmFuncCommand."app"."hc" =)"));
}

TEST(VigilMib, SnmptablePrintsNamesOnly)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    publishAllTables(application);
    ASSERT_TRUE(tool.waitFor(lastCell, QStringLiteral("1")));
    for (const char* table : {"HealthCheck", "Metric", "MetricResult", "PerfData", "MgmFunc"}) {
        const QString name = QStringLiteral("vigil%1Table").arg(QLatin1String(table));
        const SnmpTool::Result result =
            tool.run(QStringLiteral("snmptable"), {QStringLiteral("VIGIL-MIB::") + name},
                     {QStringLiteral("-Ci"), QStringLiteral("-Cl")});
        EXPECT_EQ(result.exitCode, 0) << table;
        EXPECT_EQ(result.err, QString()) << table;
        EXPECT_TRUE(result.out.contains(name)) << qPrintable(result.out);
        EXPECT_FALSE(result.out.contains(QStringLiteral("32473"))) << qPrintable(result.out);
    }
}

// One such cell made every snmptable print "No entries".
TEST(VigilMib, AForeignCellLeavesATableReadable)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    FakeApplication stranger(agent.applicationPort());
    publish(stranger, "1.1.3", "0", 1);
    ASSERT_TRUE(agent.waitForLog("which does not fit into the tables of VIGIL-MIB"));
    publishAllTables(application);
    ASSERT_TRUE(tool.waitFor(lastCell, QStringLiteral("1")));
    const SnmpTool::Result result =
        tool.run(QStringLiteral("snmptable"), {QStringLiteral("VIGIL-MIB::vigilHealthCheckTable")},
                 {QStringLiteral("-Ci"), QStringLiteral("-Cl")});
    EXPECT_TRUE(result.out.contains(QStringLiteral("m is high"))) << qPrintable(result.out);
}
