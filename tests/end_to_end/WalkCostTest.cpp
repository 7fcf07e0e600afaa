// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A request through snmpd once took five times as long with 250 connected applications as with one: the agent
// polled all their connections three times for each.

#include <gtest/gtest.h>

#include <QTcpSocket>

#include <algorithm>
#include <ctime>
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

double processorSeconds(qint64 process)
{
    clockid_t clock = CLOCK_REALTIME;
    timespec time{};
    if (clock_getcpuclockid(static_cast<pid_t>(process), &clock) != 0 || clock_gettime(clock, &time) != 0)
        return 0;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

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

    void walk()
    {
        const double before = processorSeconds(agent->processId());
        EXPECT_EQ(manager().walk(support::full("5")).size(), publishedCells);
        costs.push_back(processorSeconds(agent->processId()) - before);
    }

    double medianCost()
    {
        std::sort(costs.begin(), costs.end());
        return costs.at(costs.size() / 2);
    }

    SnmpdProcess snmpd{SnmpdProcess::openToThisHost()};
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
    std::vector<std::unique_ptr<QTcpSocket>> idle;
    std::vector<double> costs; // of each walk
};

} // namespace

TEST(WalkCost, DoesNotDependOnTheNumberOfApplications)
{
    Walked few;
    Walked many;
    ASSERT_TRUE(few.start());
    ASSERT_TRUE(many.start());
    ASSERT_TRUE(many.connectIdleApplications());
    for (int i = 0; i < walks; ++i) { // in turn, so that both meet the same load of the machine
        few.walk();
        many.walk();
    }
    EXPECT_LT(many.medianCost(), 2 * few.medianCost());
}
