// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <memory>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::enterprise;
using support::FakeApplication;
using support::full;
using support::noInstance;
using support::SnmpTool;

namespace {

const QString pastTheEnd =
    QStringLiteral("No more variables left in this MIB View (It is past the end of the MIB tree)");

class AgentServing : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(agent.start()) << agent.log().constData(); }

    /// Waits until the agent has handled everything the application has sent.
    void settle(FakeApplication& application, const SnmpTool& tool)
    {
        application.publish("999.1", ++m_marks);
        ASSERT_TRUE(tool.waitFor(full("999.1"), QString::number(m_marks))) << agent.log().constData();
    }

    AgentProcess agent;

private:
    int m_marks = 0;
};

} // namespace

TEST_F(AgentServing, IntegersAppearAsInteger32AndTextsAsOctetString)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    application.publish("1.1", -2147483647 - 1);
    application.publish("1.2", std::string("all is well"));
    application.publish("1.3", std::string());
    settle(application, tool);
    const SnmpTool::Result result =
        tool.run(QStringLiteral("snmpget"), {full("1.1"), full("1.2"), full("1.3")}, {QStringLiteral("-On")});
    EXPECT_EQ(result.out, full("1.1") + QStringLiteral(" = INTEGER: -2147483648\n") + full("1.2") +
                              QStringLiteral(" = STRING: \"all is well\"\n") + full("1.3") +
                              QStringLiteral(" = \"\""));
}

TEST_F(AgentServing, AMissingCellReadsNoSuchInstance)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    application.publish("1.1", 1);
    settle(application, tool);
    EXPECT_EQ(tool.get(full("1")), noInstance);
    EXPECT_EQ(tool.get(full("1.1.0")), noInstance);
}

TEST_F(AgentServing, GetNextAndGetBulkWalkInNumericOrder)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    for (const char* id : {"5.10", "5.9", "5.9.4294967273", "6.1"})
        application.publish(id, 7);
    settle(application, tool);
    const QStringList expected{full("5.9") + QStringLiteral(" 7"),
                               full("5.9.4294967273") + QStringLiteral(" 7"),
                               full("5.10") + QStringLiteral(" 7")};
    EXPECT_EQ(tool.walk(full("5"), QStringLiteral("snmpwalk")), expected);
    EXPECT_EQ(tool.walk(full("5"), QStringLiteral("snmpbulkwalk")), expected);
    EXPECT_EQ(tool.run(QStringLiteral("snmpgetnext"), {full("5.10")}, {QStringLiteral("-Onq")}).out,
              full("6.1") + QStringLiteral(" 7"));
}

TEST_F(AgentServing, OutsideTheEnterpriseOnlyTheGroupsSystemAndSnmpAreServed)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    settle(application, tool);
    QStringList lines = tool.walk(QStringLiteral(".1"));
    for (const QString& group :
         {QStringLiteral(".1.3.6.1.2.1.1."), QStringLiteral(".1.3.6.1.2.1.11."), full("127.3.1.200.5.")}) {
        ASSERT_TRUE(!lines.isEmpty() && lines.constFirst().startsWith(group)) << qPrintable(group);
        while (!lines.isEmpty() && lines.constFirst().startsWith(group))
            lines.removeFirst();
    }
    EXPECT_EQ(lines, (QStringList{full("999.1") + QStringLiteral(" 1"), full("999.1 ") + pastTheEnd}));
}

TEST_F(AgentServing, AnUnsetRemovesTheCellAndEverythingBelowIt)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    for (const char* id : {"5.1", "5.1.2", "5.1.2.3", "5.10"})
        application.publish(id, 7);
    application.unset("5.1");
    application.unset("77.77");
    settle(application, tool);
    EXPECT_EQ(tool.walk(full("5")), QStringList{full("5.10") + QStringLiteral(" 7")});
}

TEST_F(AgentServing, AnUnsetOfTheEnterpriseRemovesAllCellsOfItsSender)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication first(agent.applicationPort());
    FakeApplication second(agent.applicationPort());
    first.publish("5.1", 1);
    second.publish("5.2", 2);
    settle(second, tool);
    first.unset("");
    settle(first, tool);
    EXPECT_EQ(tool.walk(full("5")), QStringList{full("5.2") + QStringLiteral(" 2")});
}

TEST_F(AgentServing, TheLastWriterOwnsACellAndTheTakeoverIsLogged)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication first(agent.applicationPort());
    FakeApplication second(agent.applicationPort());
    first.publish("5.1", 1);
    settle(first, tool);
    second.publish("5.1", 2);
    settle(second, tool);
    EXPECT_EQ(tool.get(full("5.1")), QStringLiteral("2"));
    EXPECT_TRUE(agent.waitForLog("has taken over 1.3.6.1.4.1.32473.5.1 from application 1"));

    first.unset("5.1");
    first.publish("5.3", 3);
    settle(first, tool);
    EXPECT_EQ(tool.get(full("5.1")), QStringLiteral("2"));
    second.unset("5.1");
    settle(second, tool);
    EXPECT_EQ(tool.get(full("5.1")), noInstance);
}

TEST_F(AgentServing, CellsUnsetBeforeADisconnectAreGone)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication first(agent.applicationPort());
    FakeApplication second(agent.applicationPort());
    first.publish("5.1", 1);
    second.publish("5.2", 2);
    settle(first, tool);
    settle(second, tool);
    first.unset("5.1");
    first.close();
    EXPECT_TRUE(tool.waitFor(full("5.1"), noInstance));
    EXPECT_EQ(tool.get(full("5.2")), QStringLiteral("2"));
}

TEST_F(AgentServing, AnIdentifierOf128ArcsIsServedAndALongerOneIsNot)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    std::string longest = "5";
    for (int arcs = 8; arcs < 128; ++arcs)
        longest += ".7";
    application.publish(longest, 1);
    application.publish(longest + ".7", 2);
    application.publish(longest + ".7", 3);
    settle(application, tool);
    EXPECT_EQ(tool.walk(full("5")), QStringList{full(longest.c_str()) + QStringLiteral(" 1")});
    EXPECT_TRUE(application.isConnected());
    EXPECT_EQ(agent.log().count("129 arcs"), 1) << agent.log().constData();
}

TEST_F(AgentServing, AValueWithoutIdentifierIsNotServedAndDoesNoHarm)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    application.publish("", 1);
    settle(application, tool);
    EXPECT_EQ(tool.get(enterprise), noInstance);
    EXPECT_TRUE(agent.log().contains("without an identifier"));
}

TEST_F(AgentServing, ATcpAddressServesALargeTable)
{
    const SnmpTool tool(agent.tcpAddress());
    FakeApplication application(agent.applicationPort());
    for (int i = 0; i < 5000; ++i)
        application.publish("5." + std::to_string(i), "value " + std::to_string(i));
    settle(application, tool);
    const QStringList lines = tool.walk(full("5"));
    ASSERT_EQ(lines.size(), 5000);
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(lines[i], QStringLiteral("%1.5.%2 \"value %2\"").arg(enterprise).arg(i));
}

TEST_F(AgentServing, WithoutConfigurationOnlyPublicReadsAndNothingIsWritable)
{
    const SnmpTool tool(agent.udpAddress());
    FakeApplication application(agent.applicationPort());
    application.publish("5.1", 1);
    settle(application, tool);
    const SnmpTool stranger(agent.udpAddress(), SnmpTool::community(QStringLiteral("private")));
    const SnmpTool::Result refused = stranger.run(QStringLiteral("snmpget"), {full("5.1")},
                                                  {QStringLiteral("-r0"), QStringLiteral("-t1")});
    EXPECT_NE(refused.exitCode, 0);
    EXPECT_TRUE(refused.err.contains(QStringLiteral("Timeout"))) << qPrintable(refused.err);

    const SnmpTool::Result set = tool.set({full("5.1"), QStringLiteral("i"), QStringLiteral("2")});
    EXPECT_NE(set.exitCode, 0);
    EXPECT_TRUE(set.err.contains(QStringLiteral("noAccess"))) << qPrintable(set.err);
    EXPECT_EQ(tool.get(full("5.1")), QStringLiteral("1"));
    EXPECT_TRUE(application.questions().empty());
}

/// An agent with two SNMPv3 users for subtree 5: "reader" may read, "writer" may also write.
class AgentAccess : public testing::Test
{
protected:
    void SetUp() override
    {
        QFile file(directory.filePath(QStringLiteral("agent.conf")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("createUser reader SHA readerAuthPass AES readerPrivPass\n"
                   "rouser reader priv .1.3.6.1.4.1.32473.5\n"
                   "createUser writer SHA writerAuthPass AES writerPrivPass\n"
                   "rwuser writer priv .1.3.6.1.4.1.32473.5\n");
        file.close();
        agent = std::make_unique<AgentProcess>(QStringList{QStringLiteral("--config"), file.fileName()});
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish("6.1", 1);
        application->publish("5.1", 1);
        ASSERT_TRUE(managerNamed(QStringLiteral("reader")).waitFor(full("5.1"), QStringLiteral("1")));
    }

    SnmpTool managerNamed(const QString& name) const
    {
        return SnmpTool(agent->udpAddress(),
                        QStringLiteral("-v3 -l authPriv -u %1 -a SHA -A %1AuthPass -x AES -X %1PrivPass")
                            .arg(name)
                            .split(QLatin1Char(' ')));
    }

    const QStringList assignment = {full("5.1"), QStringLiteral("i"), QStringLiteral("2")};
    const QTemporaryDir directory;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
};

TEST_F(AgentAccess, AReaderSeesOnlyTheSubtreeOfItsView)
{
    const SnmpTool reader = managerNamed(QStringLiteral("reader"));
    EXPECT_EQ(reader.get(full("5.1")), QStringLiteral("1"));
    EXPECT_NE(reader.get(full("6.1")), QStringLiteral("1"));
}

TEST_F(AgentAccess, AReaderCannotSet)
{
    const SnmpTool reader = managerNamed(QStringLiteral("reader"));
    EXPECT_NE(reader.set(assignment).exitCode, 0);
    EXPECT_EQ(reader.get(full("5.1")), QStringLiteral("1"));
}

TEST_F(AgentAccess, AWriterCanSet)
{
    EXPECT_EQ(managerNamed(QStringLiteral("writer")).set(assignment).exitCode, 0);
    EXPECT_EQ(managerNamed(QStringLiteral("reader")).get(full("5.1")), QStringLiteral("2"));
}

TEST_F(AgentAccess, AConfigurationReplacesTheBuiltInAccess)
{
    const SnmpTool::Result result =
        SnmpTool(agent->udpAddress())
            .run(QStringLiteral("snmpget"), {full("5.1")}, {QStringLiteral("-r0"), QStringLiteral("-t1")});
    EXPECT_NE(result.exitCode, 0);
}

TEST(AgentServingASubtree, NothingOutsideItIsServed)
{
    AgentProcess agent({QStringLiteral("--subtree"), QStringLiteral("1.3.6.1.4.1.32473.5")});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    FakeApplication application(agent.applicationPort());
    for (const char* cell : {"4.1", "5.1", "5.2", "6.1"})
        application.publish(cell, 1);
    const SnmpTool tool(agent.udpAddress());
    EXPECT_TRUE(tool.waitFor(full("5.2"), QStringLiteral("1")));
    EXPECT_EQ(tool.walk(full("5")),
              (QStringList{full("5.1") + QStringLiteral(" 1"), full("5.2") + QStringLiteral(" 1")}));
    EXPECT_TRUE(tool.get(full("4.1")).startsWith(QStringLiteral("No Such")));
    EXPECT_TRUE(tool.get(full("6.1")).startsWith(QStringLiteral("No Such")));
}
