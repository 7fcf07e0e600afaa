// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent with applications of several users.

#include <gtest/gtest.h>

#include "support/AgentProcess.h"
#include "support/AsUser.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::AsUser;
using support::FakeApplication;
using support::firstUser;
using support::full;
using support::secondUser;
using support::SnmpTool;

namespace {

class AgentUsers : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!support::canActForUsers())
            GTEST_SKIP() << "only root can create sockets of other users";
    }

    void start(const QStringList& arguments = {})
    {
        agent = std::make_unique<AgentProcess>(QStringList{QStringLiteral("--verbose")} + arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        tool = std::make_unique<SnmpTool>(agent->udpAddress());
    }

    std::unique_ptr<FakeApplication> connectAs(std::uint32_t user)
    {
        const AsUser other(user);
        return std::make_unique<FakeApplication>(agent->applicationPort());
    }

    bool settle(FakeApplication& application, const char* markOid)
    {
        application.publish(markOid, ++m_marks);
        return tool->waitFor(full(markOid), QString::number(m_marks));
    }

    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<SnmpTool> tool;

private:
    int m_marks = 0;
};

QString agentObject(const char* name)
{
    return QStringLiteral("VIGIL-AGENT-MIB::vigilAgent") + QLatin1String(name);
}

} // namespace

TEST_F(AgentUsers, OnlyTheSameUserReplacesAValue)
{
    start();
    const auto shop = connectAs(firstUser);
    shop->publish("5.1", 1);
    ASSERT_TRUE(settle(*shop, "6.1"));
    const auto mallory = connectAs(secondUser);
    mallory->publish("5.1", 2);
    mallory->unset("5");
    ASSERT_TRUE(settle(*mallory, "6.2"));
    EXPECT_EQ(tool->get(full("5.1")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(agentObject("TakeoversRefused.0")), QStringLiteral("1"));
    EXPECT_EQ(tool->get(agentObject("ConnectionUser.1")), QString::number(firstUser));
    EXPECT_EQ(tool->get(agentObject("ConnectionUser.2")), QString::number(secondUser));
    EXPECT_EQ(tool->get(agentObject("ConnectionProcess.2")), QStringLiteral("0"));
    EXPECT_TRUE(agent->waitForLog("application 2 (uid 51002, 127.0.0.1:"));
    EXPECT_TRUE(agent->waitForLog("publishes 1.3.6.1.4.1.32473.5.1, which belongs to another user: "
                                  "application 1 (uid 51001, 127.0.0.1:"));
}

TEST_F(AgentUsers, RootMayReplaceAllValues)
{
    start();
    const auto shop = connectAs(firstUser);
    shop->publish("5.1", 1);
    ASSERT_TRUE(settle(*shop, "6.1"));
    FakeApplication root(agent->applicationPort());
    root.publish("5.1", 2);
    EXPECT_TRUE(tool->waitFor(full("5.1"), QStringLiteral("2")));
    EXPECT_TRUE(agent->waitForLog("has taken over 1.3.6.1.4.1.32473.5.1 from application 1 (uid 51001"));
}

TEST_F(AgentUsers, AManagersSetAsksTheUserWhoPublishedTheCell)
{
    start({QStringLiteral("--set-timeout"), QStringLiteral("60000")});
    const auto shop = connectAs(firstUser);
    shop->publish("5.1", 1);
    ASSERT_TRUE(settle(*shop, "6.1"));
    const auto mallory = connectAs(secondUser);
    mallory->publish("5.1", 1);
    ASSERT_TRUE(settle(*mallory, "6.2"));
    tool->set({full("5.1"), QStringLiteral("i"), QStringLiteral("7")});
    EXPECT_TRUE(mallory->questions().empty());
}

TEST_F(AgentUsers, AllowUsersNamesWhoMayPublish)
{
    start({QStringLiteral("--allow-users"), QStringLiteral("root, 51001")});
    const auto shop = connectAs(firstUser);
    shop->publish("5.1", 1);
    FakeApplication root(agent->applicationPort());
    root.publish("5.2", 2);
    EXPECT_TRUE(tool->waitFor(full("5.1"), QStringLiteral("1")));
    EXPECT_TRUE(tool->waitFor(full("5.2"), QStringLiteral("2")));
    for (int attempt = 0; attempt < 3; ++attempt)
        EXPECT_TRUE(connectAs(secondUser)->waitForDisconnect());
    EXPECT_EQ(agent->log().count("an application (uid 51002) is turned away"), 1) << agent->log().constData();
    EXPECT_EQ(tool->get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentConnectionsRefused.0")),
              QStringLiteral("3"));
}
