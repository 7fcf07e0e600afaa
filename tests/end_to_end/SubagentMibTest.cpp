// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::enterprise;
using support::FakeApplication;
using support::full;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

const QString cells = QStringLiteral("VIGIL-AGENT-MIB::vigilAgentCells.0");

/// snmpd with subagents.
class SubagentMib : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(snmpd.start()) << snmpd.log().constData(); }

    std::unique_ptr<AgentProcess> startAgent(const QStringList& arguments = {})
    {
        auto agent = std::make_unique<AgentProcess>(snmpd.agentxAddress(), arguments);
        join(*agent);
        return agent;
    }

    static void join(AgentProcess& agent)
    {
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        ASSERT_TRUE(agent.waitForLog("serving ")) << agent.log().constData();
    }

    static QStringList subtree(const char* relative)
    {
        return {QStringLiteral("--subtree"), enterprise.mid(1) + QLatin1Char('.') + QLatin1String(relative)};
    }

    SnmpTool manager() const { return SnmpTool(snmpd.udpAddress()); }

    SnmpdProcess snmpd;
};

} // namespace

TEST_F(SubagentMib, AWalkThroughSnmpdReadsItBetweenItsNeighbours)
{
    const auto agent = startAgent();
    FakeApplication application(agent->applicationPort());
    application.publish("5.1", 1);
    application.publish("999.1", 2);
    ASSERT_TRUE(manager().waitFor(full("999.1"), QStringLiteral("2")));
    for (const char* program : {"snmpwalk", "snmpbulkwalk"}) {
        const QStringList lines = manager().walk(enterprise, QLatin1String(program));
        ASSERT_EQ(lines.size(), 1 + 15 + 12 + 8 + 1) << qPrintable(lines.join(QLatin1Char('\n')));
        EXPECT_EQ(lines.constFirst(), enterprise + QStringLiteral(".5.1 1"));
        EXPECT_TRUE(lines[1].startsWith(enterprise + QStringLiteral(".127.3.1.200.5.1.1.0 ")));
        EXPECT_TRUE(lines[lines.size() - 2].startsWith(enterprise + QStringLiteral(".127.3.1.200.5.3.8.0 ")));
        EXPECT_EQ(lines.constLast(), enterprise + QStringLiteral(".999.1 2"));
    }
}

TEST_F(SubagentMib, IsServedEvenIfTheSubtreeDoesNotContainIt)
{
    const auto agent = startAgent(subtree("127.3.1.200.4"));
    FakeApplication application(agent->applicationPort());
    application.publish("127.3.1.200.4.9", 1);
    application.publish("5.1", 2);
    EXPECT_TRUE(manager().waitFor(cells, QStringLiteral("2")));
    ASSERT_TRUE(snmpd.kill());
    ASSERT_TRUE(snmpd.start());
    EXPECT_TRUE(manager().waitFor(cells, QStringLiteral("2")));
    EXPECT_TRUE(manager().waitFor(full("127.3.1.200.4.9"), QStringLiteral("1")));
    EXPECT_TRUE(manager().get(full("5.1")).startsWith(QStringLiteral("No Such")));
}

TEST_F(SubagentMib, ASecondAgentOnTheHostServesApplicationsWithoutIt)
{
    const auto first = startAgent(subtree("5"));
    const auto second = startAgent(subtree("6"));
    EXPECT_TRUE(second->waitForLog("refuses to register this agent's own objects"));
    FakeApplication application(second->applicationPort());
    application.publish("6.1", 61);
    EXPECT_TRUE(manager().waitFor(full("6.1"), QStringLiteral("61")));
    EXPECT_EQ(manager().get(cells), QStringLiteral("0")) << "the first agent's";
}
