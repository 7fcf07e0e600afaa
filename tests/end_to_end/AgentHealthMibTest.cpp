// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The health of the host in VIGIL-AGENT-MIB, and the groups of SNMPv2-MIB.

#include <gmock/gmock.h>

#include <QRegularExpression>
#include <QSet>
#include <QTimer>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpTool;
using testing::ElementsAre;

namespace {

QString healthObject(const char* name, const char* instance = "0")
{
    return QStringLiteral("VIGIL-AGENT-MIB::vigilAgent%1.%2")
        .arg(QLatin1String(name), QLatin1String(instance));
}

/// The index of a row, as an application publishes it.
std::string rowOf(const std::vector<std::string>& texts)
{
    std::string row;
    for (const std::string& text : texts) {
        row += '.' + std::to_string(text.size());
        for (const char octet : text)
            row += '.' + std::to_string(static_cast<quint32>(static_cast<signed char>(octet)));
    }
    return row;
}

class AgentHealthMib : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        application = std::make_unique<FakeApplication>(agent.applicationPort());
        tool = std::make_unique<SnmpTool>(agent.udpAddress());
    }

    void publishCheck(const std::vector<std::string>& keys, int status, const std::string& summary = "text")
    {
        application->publish("127.3.1.200.4.1.1.3" + rowOf(keys), status);
        application->publish("127.3.1.200.4.1.1.4" + rowOf(keys), summary);
    }

    void publishMetric(const std::vector<std::string>& texts, int status, const std::string& value)
    {
        const auto publish = [&](const char* column, const auto& cell) {
            application->publish("127.3.1.200.4." + std::string(column) + rowOf(texts), cell);
        };
        publish("3.1.1", status);
        publish("3.1.2", std::string("summary"));
        publish("4.1.2", value);
        publish("4.1.3", std::string(" MB"));
        publish("4.1.4", std::string("~:80"));
        publish("4.1.5", std::string("@10:20"));
    }

    void settle()
    {
        application->publish("999.1", ++m_marks);
        ASSERT_TRUE(tool->waitFor(support::full("999.1"), QString::number(m_marks)))
            << agent.log().constData();
    }

    /// The values of all cells of a table, in the order of a walk.
    QStringList values(const char* table) const
    {
        return tool
            ->run(QStringLiteral("snmpbulkwalk"),
                  {QStringLiteral("VIGIL-AGENT-MIB::%1").arg(QLatin1String(table))},
                  {QStringLiteral("-OQvUe")})
            .out.split(QLatin1Char('\n'));
    }

    AgentProcess agent;
    std::unique_ptr<FakeApplication> application;
    std::unique_ptr<SnmpTool> tool;

private:
    int m_marks = 0;
};

} // namespace

TEST_F(AgentHealthMib, SumsUpTheHost)
{
    EXPECT_EQ(tool->get(healthObject("Checks")), QStringLiteral("0"));
    EXPECT_EQ(tool->get(healthObject("WorstStatus")), QStringLiteral("3")) << "nothing is known";
    EXPECT_EQ(tool->get(healthObject("LastChange")), QStringLiteral("0-0-0,0:0:0.0"));
    publishCheck({"app", "a"}, 0);
    publishCheck({"app", "b"}, 3);
    publishCheck({"app", "c"}, 1);
    publishCheck({"app", "d"}, 1);
    settle();
    EXPECT_EQ(tool->get(healthObject("Checks")), QStringLiteral("4"));
    EXPECT_EQ(tool->get(healthObject("ChecksOk")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("ChecksWarning")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(healthObject("ChecksCritical")), QStringLiteral("0"));
    EXPECT_EQ(tool->get(healthObject("ChecksUnknown")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("WorstStatus")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("WorstSeverity")), QStringLiteral("2"));
    EXPECT_TRUE(tool->get(healthObject("LastChange")).startsWith(QLatin1String("20")));
    publishCheck({"app", "a"}, 2);
    settle();
    EXPECT_EQ(tool->get(healthObject("WorstStatus")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(healthObject("WorstSeverity")), QStringLiteral("3"));
}

TEST_F(AgentHealthMib, ACheckIsARowWithANumber)
{
    publishCheck({"my app", "Öl"}, 1, "Öl is low.");
    publishCheck({"my app", "Öl"}, 1, "Öl is lower.");
    settle();
    EXPECT_EQ(tool->get(healthObject("CheckFirstKey", "1")), QStringLiteral("my app"));
    EXPECT_EQ(tool->get(healthObject("CheckSecondKey", "1")), QStringLiteral("Öl"));
    EXPECT_EQ(tool->get(healthObject("CheckName", "1")), QStringLiteral("my app/Öl"));
    EXPECT_EQ(tool->get(healthObject("CheckStatus", "1")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("CheckSeverity", "1")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(healthObject("CheckSummary", "1")), QStringLiteral("Öl is lower."));
    EXPECT_TRUE(tool->get(healthObject("CheckSince", "1")).startsWith(QLatin1String("20")));
    EXPECT_TRUE(tool->get(healthObject("CheckLastUpdate", "1")).startsWith(QLatin1String("20")));
    EXPECT_LT(tool->get(healthObject("CheckAge", "1")).toInt(), 30);
    EXPECT_EQ(tool->get(healthObject("CheckUpdates", "1")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(healthObject("CheckConnection", "1")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("CheckMuted", "1")), QStringLiteral("0"));
    EXPECT_EQ(tool->get(healthObject("CheckName", "2")), support::noInstance);
    EXPECT_EQ(tool->get(healthObject("CheckName", "1.1")), support::noInstance);
}

TEST_F(AgentHealthMib, AMetricHasItsNumbers)
{
    publishCheck({"app", "disk"}, 1);
    publishMetric({"app", "disk", "used"}, 1, "72.5");
    publishMetric({"app", "disk", "inodes"}, 0, "1e+12");
    publishMetric({"app", "disk", "speed"}, 0, "nan");
    settle();
    EXPECT_EQ(tool->get(healthObject("MetricName", "1.1")), QStringLiteral("app/disk/used"));
    EXPECT_EQ(tool->get(healthObject("MetricStatus", "1.1")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("MetricSeverity", "1.1")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(healthObject("MetricValue", "1.1")), QStringLiteral("72.5"));
    EXPECT_EQ(tool->get(healthObject("MetricMilli", "1.1")), QStringLiteral("72500"));
    EXPECT_EQ(tool->get(healthObject("MetricMilliValid", "1.1")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(healthObject("MetricUnit", "1.1")), QStringLiteral("MB"));
    EXPECT_EQ(tool->get(healthObject("MetricWarningLower", "1.1")), QString());
    EXPECT_EQ(tool->get(healthObject("MetricWarningUpper", "1.1")), QStringLiteral("80"));
    EXPECT_EQ(tool->get(healthObject("MetricWarningInverse", "1.1")), QStringLiteral("2"));
    EXPECT_EQ(tool->get(healthObject("MetricCriticalLower", "1.1")), QStringLiteral("10"));
    EXPECT_EQ(tool->get(healthObject("MetricCriticalUpper", "1.1")), QStringLiteral("20"));
    EXPECT_EQ(tool->get(healthObject("MetricCriticalInverse", "1.1")), QStringLiteral("1"));
    for (const char* beyond : {"1.2", "1.3"}) {
        EXPECT_EQ(tool->get(healthObject("MetricMilli", beyond)), QStringLiteral("0"));
        EXPECT_EQ(tool->get(healthObject("MetricMilliValid", beyond)), QStringLiteral("2"));
    }
}

TEST_F(AgentHealthMib, AWalkReadsColumnByColumn)
{
    for (const char* key : {"c", "a", "b"}) {
        publishCheck({"app", key}, 0);
        publishMetric({"app", key, "m"}, 0, "1");
    }
    settle();
    EXPECT_THAT(values("vigilAgentCheckName"), ElementsAre("app/c", "app/a", "app/b"));
    EXPECT_THAT(values("vigilAgentMetricName"), ElementsAre("app/c/m", "app/a/m", "app/b/m"));
    EXPECT_EQ(values("vigilAgentCheckTable").size(), 3 * 12);
    EXPECT_EQ(values("vigilAgentMetricTable").size(), 3 * 13);
    EXPECT_EQ(values("vigilAgentMIB").mid(15 + 12 + 8, 3).join(QLatin1Char(' ')),
              QStringLiteral("app app app"));
}

// One key with a blank or an umlaut in an index made a manager give up the walk of all rows.
TEST_F(AgentHealthMib, OddKeysAreTextsAndLeaveTheTableReadable)
{
    const std::string odd(60, '\xff');
    publishCheck({odd, std::string("a\0b", 3)}, 2, std::string(5000, '\xfe'));
    publishMetric({odd, std::string("a\0b", 3), "m"}, 0, "not a number");
    publishCheck({"", ""}, 0);
    settle();
    const QString replaced(60, QChar(QChar::ReplacementCharacter));
    EXPECT_EQ(tool->get(healthObject("CheckName", "1")), replaced + QStringLiteral("/a\uFFFDb"));
    EXPECT_EQ(tool->get(healthObject("CheckSummary", "1")), QString(85, QChar(QChar::ReplacementCharacter)));
    EXPECT_EQ(tool->get(healthObject("CheckName", "2")), QStringLiteral("/"));
    EXPECT_EQ(tool->get(healthObject("MetricValue", "1.1")), QStringLiteral("not a number"));
    EXPECT_EQ(tool->get(healthObject("MetricMilliValid", "1.1")), QStringLiteral("2"));
}

TEST_F(AgentHealthMib, IsReadOnly)
{
    publishCheck({"app", "a"}, 0);
    settle();
    const SnmpTool::Result result =
        tool->set({healthObject("CheckStatus", "1"), QStringLiteral("i"), QStringLiteral("1")});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_EQ(tool->get(healthObject("CheckStatus", "1")), QStringLiteral("0"));
}

TEST_F(AgentHealthMib, AWalkEndsWhileChecksComeAndGo)
{
    constexpr int lasting = 50;
    for (int i = 0; i < lasting; ++i)
        publishCheck({"lasting", std::to_string(i)}, 0);
    settle();
    // The event loop of the test runs during the walk, and the changes arrive in between.
    QTimer changes;
    int round = 0;
    QObject::connect(&changes, &QTimer::timeout, &changes, [&] {
        const std::vector<std::string> keys = {"fleeting", std::to_string(++round % 20)};
        publishCheck(keys, round % 3);
        application->unset("127.3.1.200.4.1.1.3" + rowOf({"fleeting", std::to_string((round + 7) % 20)}));
    });
    changes.start(1);
    const QStringList names =
        tool->walk(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentCheckName"), QStringLiteral("snmpwalk"));
    changes.stop();
    EXPECT_GT(round, 0);
    EXPECT_EQ(names.filter(QStringLiteral("lasting/")).size(), lasting);
    EXPECT_EQ(QSet<QString>(names.begin(), names.end()).size(), names.size());
}

TEST_F(AgentHealthMib, TheSystemGroupLetsManagersAddTheHost)
{
    for (const char* object : {"sysDescr", "sysObjectID", "sysUpTime", "sysName"}) {
        const QString value = tool->get(QStringLiteral("SNMPv2-MIB::%1.0").arg(QLatin1String(object)));
        EXPECT_FALSE(value.isEmpty() || value.startsWith(QLatin1String("No Such"))) << object;
    }
    EXPECT_GT(tool->get(QStringLiteral("SNMPv2-MIB::snmpInPkts.0")).toInt(), 0);
    EXPECT_EQ(tool->get(QStringLiteral("SNMPv2-MIB::sysServices.1")), support::noInstance);
}
