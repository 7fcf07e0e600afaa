// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"
#include "support/SnmptrapdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::SnmpdProcess;
using support::SnmpTool;
using support::SnmptrapdProcess;
using testing::ElementsAre;

namespace {

const QString sent = QStringLiteral("VIGIL-AGENT-MIB::vigilAgentNotificationsSent.0");

void write(FakeApplication& application, int status, const std::string& summary)
{
    application.publish("127.3.1.200.4.1.1.3.1.97.1.98", status);
    application.publish("127.3.1.200.4.1.1.4.1.97.1.98", summary);
}

QString changed(const char* status, const char* previous, const char* summary)
{
    return QStringLiteral(
               "snmpTrapOID.0 = vigilHealthStatusChanged; vigilHealthCheckStatus.\"a\".\"b\" = %1; "
               "vigilHealthCheckPreviousStatus.0 = %2; vigilHealthCheckSummary.\"a\".\"b\" = %3; "
               "vigilNotificationFirstKey.0 = a; vigilNotificationSecondKey.0 = b; "
               "vigilNotificationSeverity.0 = %4")
        .arg(QLatin1String(status), QLatin1String(previous), QLatin1String(summary))
        .arg(QStringList({QStringLiteral("ok"), QStringLiteral("unknown"), QStringLiteral("warning"),
                          QStringLiteral("critical")})
                 .indexOf(QLatin1String(status)));
}

/// snmpd with a notification receiver, a subagent and an application.
class SubagentNotifications : public testing::Test
{
protected:
    void start(const QByteArray& directive)
    {
        ASSERT_TRUE(receiver.start()) << receiver.log().constData();
        snmpd = std::make_unique<SnmpdProcess>(SnmpdProcess::openToThisHost() + directive + ' ' +
                                               receiver.address().toLatin1() + '\n');
        ASSERT_TRUE(snmpd->start()) << snmpd->log().constData();
        agent =
            std::make_unique<AgentProcess>(snmpd->agentxAddress(), QStringList{QStringLiteral("--verbose")});
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        ASSERT_TRUE(agent->waitForLog("serving ")) << agent->log().constData();
        application = std::make_unique<FakeApplication>(agent->applicationPort());
    }

    /// Without those about snmpd itself.
    QStringList waitForChanges(int count)
    {
        QStringList changes;
        support::runUntil([&] {
            changes = receiver.notifications().filter(QStringLiteral("vigil"));
            return changes.size() >= count;
        });
        return changes;
    }

    SnmptrapdProcess receiver{
        "createUser -e 0x8000000001736e6d7064 vigilTrap SHA trapPassword AES trapSecret\n"};
    std::unique_ptr<SnmpdProcess> snmpd;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
};

} // namespace

TEST_F(SubagentNotifications, ReachTheReceiversOfSnmpdAsTraps)
{
    start("trap2sink");
    write(*application, 2, "m is high");
    write(*application, 0, "all is well");
    EXPECT_THAT(waitForChanges(2), ElementsAre(changed("critical", "unknown", "m is high"),
                                               changed("ok", "critical", "all is well")))
        << receiver.log().constData() << agent->log().constData();
    EXPECT_EQ(SnmpTool(snmpd->udpAddress()).get(sent), QStringLiteral("2"));
}

TEST_F(SubagentNotifications, ReachTheReceiversOfSnmpdAsInforms)
{
    start("informsink");
    write(*application, 2, "m is high");
    EXPECT_THAT(waitForChanges(1), ElementsAre(changed("critical", "unknown", "m is high")));
}

TEST_F(SubagentNotifications, ContinueAfterARestartOfSnmpd)
{
    start("trap2sink");
    write(*application, 2, "m is high");
    ASSERT_EQ(waitForChanges(1).size(), 1);
    ASSERT_TRUE(snmpd->kill());
    ASSERT_TRUE(agent->waitForLog("the connection to snmpd"));
    ASSERT_TRUE(snmpd->start());
    ASSERT_TRUE(SnmpTool(snmpd->udpAddress()).waitFor(sent, QStringLiteral("1")));
    write(*application, 0, "all is well");
    EXPECT_THAT(waitForChanges(2), ElementsAre(changed("critical", "unknown", "m is high"),
                                               changed("ok", "critical", "all is well")));
}

// A check that turned CRITICAL while snmpd restarted was never notified.
TEST_F(SubagentNotifications, WaitWhileSnmpdIsAway)
{
    start("trap2sink");
    ASSERT_TRUE(snmpd->kill());
    ASSERT_TRUE(agent->waitForLog("the connection to snmpd"));
    application->publishAndNotify("5.1", 1);
    write(*application, 2, "m is high");
    ASSERT_TRUE(agent->waitForLog("m is high"));
    ASSERT_TRUE(snmpd->start());
    EXPECT_THAT(waitForChanges(1), ElementsAre(changed("critical", "unknown", "m is high")));
    const SnmpTool tool(snmpd->udpAddress());
    EXPECT_TRUE(tool.waitFor(sent, QStringLiteral("1")));
    EXPECT_EQ(tool.get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentRejoins.0")), QStringLiteral("1"));
    EXPECT_EQ(tool.get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentNotificationsDropped.0")),
              QStringLiteral("1"))
        << "the value";
}

TEST_F(SubagentNotifications, ReachAnSnmpV3ReceiverIfSnmpdHasItsUser)
{
    start("exactEngineID 0x8000000001736e6d7064\n"
          "createUser vigilTrap SHA trapPassword AES trapSecret\n"
          "trapsess -v 3 -u vigilTrap -l authPriv -a SHA -A trapPassword -x AES -X trapSecret");
    write(*application, 2, "m is high");
    EXPECT_THAT(waitForChanges(1), ElementsAre(changed("critical", "unknown", "m is high")))
        << receiver.log().constData() << snmpd->log().constData();
}
