// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent serves the requests of a walk on Net-SNMP's descriptors alone. Reading one of them while nothing
// is there would end the session with snmpd in the middle of a walk.

#include <gtest/gtest.h>

#include <QTcpSocket>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

constexpr int publishedCells = 1000;
constexpr int idleApplications = 200;
constexpr int walks = 15;

/// An agent behind snmpd, with an application to walk.
struct Walked
{
    bool start()
    {
        if (!snmpd.start())
            return false;
        agent = std::make_unique<AgentProcess>(snmpd.agentxAddress(), QStringList());
        if (!agent->start())
            return false;
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        for (int i = 0; i < publishedCells; ++i)
            application->publish("5." + std::to_string(i), i);
        return manager().waitFor(QStringLiteral("%1.%2").arg(support::full("5")).arg(publishedCells - 1),
                                 QString::number(publishedCells - 1));
    }

    bool connectIdleApplications()
    {
        for (int i = 0; i < idleApplications; ++i) {
            idle.push_back(std::make_unique<QTcpSocket>());
            idle.back()->connectToHost(QStringLiteral("127.0.0.1"), agent->applicationPort());
        }
        return support::runUntil([&] {
            return std::all_of(idle.begin(), idle.end(), [](const auto& socket) {
                return socket->state() == QAbstractSocket::ConnectedState;
            });
        });
    }

    SnmpTool manager() const { return SnmpTool(snmpd.udpAddress()); }

    SnmpdProcess snmpd{SnmpdProcess::openToThisHost()};
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
    std::vector<std::unique_ptr<QTcpSocket>> idle;
};

} // namespace

TEST(LongWalk, IsCompleteBesideManyApplications)
{
    Walked walked;
    ASSERT_TRUE(walked.start());
    ASSERT_TRUE(walked.connectIdleApplications());
    for (int i = 0; i < walks; ++i) {
        walked.application->publish("6", i); // meanwhile
        EXPECT_EQ(walked.manager().walk(support::full("5")).size(), publishedCells);
    }
}
