// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// snmpd and its subagents ignore AgentX messages above 64 KiB. snmpd then closed the session, and every
// application was away for seconds.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

/// snmpd as it is by default: it closes a session after some seconds without an answer.
class MessageLimit : public testing::Test
{
protected:
    static constexpr int texts = 40;
    const std::string longText = std::string(2'000, 'x');

    void SetUp() override
    {
        ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        ASSERT_TRUE(agent.waitForLog("serving ")) << agent.log().constData();
        application = std::make_unique<FakeApplication>(agent.applicationPort());
        for (int i = 0; i < texts; ++i)
            application->publish("6." + std::to_string(i), longText);
        application->publish("5.1", 1);
        ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    }

    /// Each test ends with the session it began with.
    void TearDown() override
    {
        EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("1"));
        EXPECT_EQ(agent.log().count("serving "), 1) << agent.log().constData();
    }

    SnmpTool manager() const { return SnmpTool(snmpd.udpAddress()); }

    SnmpTool writer() const
    {
        return SnmpTool(snmpd.udpAddress(), SnmpTool::community(QStringLiteral("private")));
    }

    static QStringList idsOfTexts(int count)
    {
        QStringList ids;
        for (int i = 0; i < count; ++i)
            ids.append(full(("6." + std::to_string(i)).c_str()));
        return ids;
    }

    /// As long as SNMP allows.
    static std::string longId(int last)
    {
        std::string id = "7";
        for (int i = 0; i < 119; ++i)
            id += ".1";
        return id + "." + std::to_string(last);
    }

    SnmpdProcess snmpd{SnmpdProcess::openToThisHost() + "agentXTimeout 1\nagentXRetries 5\n"};
    AgentProcess agent{snmpd.agentxAddress(), {}};
    std::unique_ptr<FakeApplication> application;
};

} // namespace

TEST_F(MessageLimit, AGetForMoreIsTooBig)
{
    for (const char* program : {"snmpget", "snmpgetnext"}) {
        const SnmpTool::Result result = manager().run(QLatin1String(program), idsOfTexts(texts));
        EXPECT_TRUE(result.err.contains(QStringLiteral("tooBig"))) << program << qPrintable(result.err);
    }
    EXPECT_EQ(manager().run(QStringLiteral("snmpget"), idsOfTexts(30)).exitCode, 0) << "60 000 bytes fit";
}

TEST_F(MessageLimit, ABulkRequestForMoreIsTooBig)
{
    const SnmpTool::Result result =
        manager().run(QStringLiteral("snmpbulkget"), idsOfTexts(texts), {QStringLiteral("-Cr2")});
    EXPECT_TRUE(result.err.contains(QStringLiteral("tooBig"))) << qPrintable(result.err);
}

TEST_F(MessageLimit, ASetOfMoreIsTooBig)
{
    QStringList triples;
    for (int i = 0; i < 100; ++i)
        triples += {full(longId(i).c_str()), QStringLiteral("s"), QString(200, QLatin1Char('z'))};
    const SnmpTool::Result result = writer().set(triples);
    EXPECT_TRUE(result.err.contains(QStringLiteral("tooBig"))) << qPrintable(result.err);
    EXPECT_FALSE(agent.log().contains("warning")) << agent.log().constData();
}

TEST_F(MessageLimit, TheLongestTextWithTheLongestIdentifierFits)
{
    application->publish(longId(1), std::string(65'535, 'y'));
    ASSERT_TRUE(agent.waitForLog("--max-text allows 60000"));
    const QString id = full(longId(1).c_str());
    ASSERT_TRUE(
        manager().waitFor(id, QLatin1Char('"') + QString(60'000, QLatin1Char('y')) + QLatin1Char('"')));
}

TEST_F(MessageLimit, AWalkOverLongTextsIsComplete)
{
    EXPECT_EQ(manager().walk(full("6"), QStringLiteral("snmpwalk")).size(), texts);
}
