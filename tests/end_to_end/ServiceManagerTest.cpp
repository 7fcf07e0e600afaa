// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "support/AgentProcess.h"
#include "support/EnvironmentVariable.h"
#include "support/NotifySocket.h"
#include "support/RunUntil.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::EnvironmentVariable;
using support::NotifySocket;
using support::SnmpdProcess;

namespace {

/// The agent as a service manager starts it.
class ServiceManager : public testing::Test
{
protected:
    NotifySocket manager;
    EnvironmentVariable socket{"NOTIFY_SOCKET", manager.path().toUtf8()};
    SnmpdProcess snmpd;
    AgentProcess agent{snmpd.agentxAddress(), {}};
};

} // namespace

TEST_F(ServiceManager, IsToldTheAgentIsReadyWithOrWithoutSnmpd)
{
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    EXPECT_TRUE(manager.waitFor("READY=1"));
    EXPECT_TRUE(manager.waitFor("STATUS=waiting for snmpd at " + snmpd.agentxAddress().toUtf8()));
    EXPECT_EQ(agent.stop(), 0);
    EXPECT_TRUE(manager.waitFor("STOPPING=1"));
    EXPECT_FALSE(manager.received().contains("WATCHDOG"));
}

TEST_F(ServiceManager, IsToldTheStateOfTheConnectionToSnmpd)
{
    const QByteArray serving =
        "STATUS=serving 1.3.6.1.4.1.32473 through snmpd at " + snmpd.agentxAddress().toUtf8();
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    EXPECT_TRUE(manager.waitFor(serving));
    ASSERT_TRUE(snmpd.stop());
    EXPECT_TRUE(manager.waitFor("STATUS=waiting for snmpd at " + snmpd.agentxAddress().toUtf8(), 2));
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    EXPECT_TRUE(manager.waitFor(serving, 2));
}

TEST_F(ServiceManager, GetsWatchdogPingsWhileTheEventLoopRuns)
{
    const EnvironmentVariable interval("WATCHDOG_USEC", "200000");
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    EXPECT_TRUE(manager.waitFor("WATCHDOG=1", 5));
}

TEST_F(ServiceManager, GetsWatchdogPingsWhileSnmpdHangs)
{
    const EnvironmentVariable interval("WATCHDOG_USEC", "200000");
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    ASSERT_TRUE(agent.waitForLog("serving"));
    snmpd.suspend();
    const int before = manager.received().count("WATCHDOG=1");
    EXPECT_TRUE(manager.waitFor("WATCHDOG=1", before + 5));
    snmpd.resume();
}
