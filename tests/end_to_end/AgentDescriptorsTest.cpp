// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Connections used up all descriptors. The agent then took much of a processor, without a word in the log,
// and could not join snmpd again.

#include <gtest/gtest.h>

#include <QTcpSocket>

#include <algorithm>
#include <memory>
#include <vector>

#include <sys/resource.h>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::runUntil;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

constexpr rlim_t fewDescriptors = 64;

void setLimit(const AgentProcess& agent)
{
    const rlimit limit = {fewDescriptors, fewDescriptors};
    ASSERT_EQ(prlimit(static_cast<pid_t>(agent.processId()), RLIMIT_NOFILE, &limit, nullptr), 0);
}

using Sockets = std::vector<std::unique_ptr<QTcpSocket>>;

Sockets connectMany(quint16 port, int count)
{
    Sockets sockets;
    for (int i = 0; i < count; ++i) {
        sockets.push_back(std::make_unique<QTcpSocket>());
        sockets.back()->connectToHost(QHostAddress::LocalHost, port);
        EXPECT_TRUE(sockets.back()->waitForConnected(support::deadlineMs));
    }
    return sockets;
}

auto countConnected(const Sockets& sockets)
{
    return std::count_if(sockets.begin(), sockets.end(), [](const auto& socket) {
        return socket->state() == QAbstractSocket::ConnectedState;
    });
}

} // namespace

TEST(AgentDescriptors, ApplicationsLeaveTheAgentEnoughToJoinSnmpd)
{
    SnmpdProcess snmpd;
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    AgentProcess agent(snmpd.agentxAddress(), {});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    ASSERT_TRUE(agent.waitForLog("serving "));
    FakeApplication application(agent.applicationPort());
    application.publish("5.1", 1);
    const SnmpTool manager(snmpd.udpAddress());
    ASSERT_TRUE(manager.waitFor(full("5.1"), QStringLiteral("1")));
    setLimit(agent);

    Sockets sockets = connectMany(agent.applicationPort(), static_cast<int>(fewDescriptors));
    ASSERT_TRUE(agent.waitForLog("the agent needs the last descriptors itself"));
    ASSERT_TRUE(snmpd.stop());
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    EXPECT_TRUE(agent.waitForLog("serving ", 2)) << agent.log().constData();
    EXPECT_EQ(manager.get(full("5.1")), QStringLiteral("1"));
    EXPECT_EQ(agent.log().count("cannot accept an application"), 1) << agent.log().constData();

    sockets.clear();
    EXPECT_TRUE(runUntil([&] { // until the agent accepts again
        FakeApplication next(agent.applicationPort());
        next.publish("5.2", 2);
        return runUntil([&] { return !next.isConnected(); }, 200)
                   ? false
                   : manager.get(full("5.2")) == QStringLiteral("2");
    }));
}

TEST(AgentDescriptors, AnAddressHasSixteenTcpConnections)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    Sockets sockets = connectMany(agent.snmpPort(), 40);
    EXPECT_TRUE(runUntil([&] { return countConnected(sockets) == 16; })) << countConnected(sockets);
    ASSERT_TRUE(agent.waitForLog("of the manager at 127.0.0.1 is closed: it has 16 already"));
    EXPECT_EQ(agent.log().count("is closed: "), 1) << agent.log().constData();
    const QString cells = QStringLiteral("VIGIL-AGENT-MIB::vigilAgentCells.0");
    EXPECT_EQ(SnmpTool(agent.udpAddress()).get(cells), QStringLiteral("0"));

    sockets.clear();
    EXPECT_TRUE(SnmpTool(agent.tcpAddress()).waitFor(cells, QStringLiteral("0")));
}

TEST(AgentDescriptors, ManagersLeaveTheAgentItsOwnDescriptors)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    const rlimit limit = {48, 48}; // less than 16 connections, the agent's own and its reserve
    ASSERT_EQ(prlimit(static_cast<pid_t>(agent.processId()), RLIMIT_NOFILE, &limit, nullptr), 0);
    const Sockets sockets = connectMany(agent.snmpPort(), 20);
    EXPECT_TRUE(runUntil([&] { return countConnected(sockets) < 16; })) << countConnected(sockets);
    EXPECT_TRUE(agent.waitForLog("is closed: the agent needs the last descriptors itself"));
    EXPECT_EQ(agent.log().count("is closed: "), 1) << agent.log().constData();
}
