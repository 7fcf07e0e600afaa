// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// vigil-agent --show, which asks another vigil-agent.

#include <gtest/gtest.h>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpTool;

namespace {

class AgentShow : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(agent.start()) << agent.log().constData(); }

    static AgentProcess::Outcome show(const QString& address, const QStringList& arguments = {})
    {
        return AgentProcess::run(
            QStringList{QStringLiteral("--show"), QStringLiteral("--standalone"), address} + arguments);
    }

    AgentProcess agent;
};

} // namespace

TEST_F(AgentShow, PrintsChecksMetricsAndApplications)
{
    FakeApplication application(agent.applicationPort());
    const std::string table = "127.3.1.200.4.";
    application.publish(table + "1.1.3.1.97.1.98", 1);
    application.publish(table + "1.1.4.1.97.1.98", "Out of range");
    application.publish(table + "3.1.1.1.97.1.98.1.99", 1);
    application.publish(table + "4.1.2.1.97.1.98.1.99", "950");
    application.publish("9.1", 1);
    ASSERT_TRUE(SnmpTool(agent.udpAddress()).waitFor(support::full("9.1"), QStringLiteral("1")));
    for (const QString& address : {agent.udpAddress(), agent.tcpAddress()}) {
        const AgentProcess::Outcome shown = show(address);
        EXPECT_EQ(shown.exitCode, 0) << shown.err.constData();
        EXPECT_TRUE(shown.out.startsWith("WARNING - 0 critical, 1 warning, 0 unknown, 0 ok"))
            << shown.out.constData();
        EXPECT_TRUE(shown.out.contains("WARNING   a/b since ")) << shown.out.constData();
        EXPECT_TRUE(shown.out.contains(" UTC: Out of range")) << shown.out.constData();
        EXPECT_TRUE(shown.out.contains("  WARNING   c = 950")) << shown.out.constData();
        EXPECT_TRUE(shown.out.contains("is connected, 5 cells")) << shown.out.constData();
        EXPECT_EQ(shown.filesLeft, QStringList());
    }
}

TEST_F(AgentShow, ReadsMoreThanOneAnswer)
{
    constexpr int checks = 60;
    FakeApplication application(agent.applicationPort());
    for (unsigned int check = 1; check <= checks; ++check)
        application.publish("127.3.1.200.4.1.1.3.1.97.1." + std::to_string(check + 32), 0);
    application.publish("9.1", 1);
    ASSERT_TRUE(SnmpTool(agent.udpAddress()).waitFor(support::full("9.1"), QStringLiteral("1")));
    const AgentProcess::Outcome shown = show(agent.udpAddress());
    EXPECT_TRUE(shown.out.contains(QByteArray::number(checks) + " ok")) << shown.out.constData();
    EXPECT_EQ(shown.out.count("OK        a/"), checks) << shown.out.constData();
}

TEST_F(AgentShow, SaysThatNoAgentAnswers)
{
    const AgentProcess::Outcome refused =
        show(agent.udpAddress(), {QStringLiteral("--community"), QStringLiteral("other")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_TRUE(refused.err.contains("no agent answers at udp:127.0.0.1:")) << refused.err.constData();
    EXPECT_TRUE(refused.out.isEmpty());
    EXPECT_EQ(agent.stop(), 0);
    const AgentProcess::Outcome gone = show(agent.tcpAddress());
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_TRUE(gone.err.contains("no agent can be asked at tcp:127.0.0.1:")) << gone.err.constData();
}
