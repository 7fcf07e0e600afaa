// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUdpSocket>

#include "support/AgentProcess.h"
#include "support/ApplicationProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/FreePort.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmptrapdProcess.h"

using support::AgentProcess;
using support::ApplicationProcess;
using support::FakeApplication;
using support::runUntil;
using support::SnmpTool;
using support::SnmptrapdProcess;
using testing::ElementsAre;

namespace {

const std::string checkIndex = "3.97.112.112.2.104.99"; // "app", "hc"

void write(FakeApplication& application, int status, const std::string& summary)
{
    application.publish("127.3.1.200.4.1.1.3." + checkIndex, status);
    application.publish("127.3.1.200.4.1.1.4." + checkIndex, summary);
}

const QString v3User =
    QStringLiteral("-u operator -l authPriv -a SHA -A operatorAuth -x AES -X operatorPriv");

QString changed(const char* status, const char* previous, const char* summary)
{
    return QStringLiteral("snmpTrapOID.0 = vigilHealthStatusChanged; "
                          "vigilHealthCheckStatus.\"app\".\"hc\" = %1; "
                          "vigilHealthCheckPreviousStatus.0 = %2; "
                          "vigilHealthCheckSummary.\"app\".\"hc\" = %3; "
                          "vigilNotificationFirstKey.0 = app; vigilNotificationSecondKey.0 = hc; "
                          "vigilNotificationSeverity.0 = %4")
        .arg(QLatin1String(status), QLatin1String(previous), QLatin1String(summary))
        .arg(QStringList({QStringLiteral("ok"), QStringLiteral("unknown"), QStringLiteral("warning"),
                          QStringLiteral("critical")})
                 .indexOf(QLatin1String(status)));
}

QString withoutTimes(QString notification)
{
    return notification.replace(
        QRegularExpression(QStringLiteral("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d")),
        QStringLiteral("TIME"));
}

class AgentNotifications : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(receiver.start()) << receiver.log().constData(); }

    void startAgent(const QString& directives, const QStringList& arguments = {})
    {
        writeConfiguration(directives);
        agent = std::make_unique<AgentProcess>(
            QStringList{QStringLiteral("--verbose"), QStringLiteral("--config"), configuration()} +
            arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
    }

    void writeConfiguration(const QString& directives)
    {
        QFile file(configuration());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("rocommunity public 127.0.0.1\n" + directives.toUtf8() + '\n');
    }

    QString configuration() const { return m_directory.filePath(QStringLiteral("agent.conf")); }

    SnmptrapdProcess receiver;
    std::unique_ptr<AgentProcess> agent;

private:
    QTemporaryDir m_directory;
};

} // namespace

TEST_F(AgentNotifications, AChangeAndTheRecoveryArriveAsTraps)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address());
    FakeApplication application(agent->applicationPort());
    write(application, 3, "");
    write(application, 0, "all is well");
    write(application, 2, "m is high");
    ASSERT_THAT(receiver.waitForNotifications(1), ElementsAre(changed("critical", "ok", "m is high")))
        << receiver.log().constData() << agent->log().constData();
    write(application, 0, "all is well again");
    EXPECT_THAT(
        receiver.waitForNotifications(2),
        ElementsAre(changed("critical", "ok", "m is high"), changed("ok", "critical", "all is well again")));
    EXPECT_EQ(
        SnmpTool(agent->udpAddress()).get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentNotificationsSent.0")),
        QStringLiteral("2"));
}

TEST_F(AgentNotifications, AReceiverMayBeGivenByName)
{
    QString address = receiver.address();
    startAgent(QStringLiteral("trap2sink ") +
               address.replace(QLatin1String("127.0.0.1"), QLatin1String("localhost")));
    FakeApplication application(agent->applicationPort());
    EXPECT_TRUE(runUntil([&] { // the agent may still be looking for the address
        application.publishAndNotify("5.1", 1);
        return receiver.log().contains("vigilValueChanged");
    })) << agent->log().constData();
}

TEST_F(AgentNotifications, AKilledApplicationAndItsReturnAreNotified)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address(),
               {QStringLiteral("--grace"), QStringLiteral("1")});
    ApplicationProcess application(agent->applicationPort());
    ASSERT_TRUE(application.start());
    application.publish(1);
    ASSERT_TRUE(SnmpTool(agent->udpAddress()).waitFor(ApplicationProcess::valueName(), QStringLiteral("1")));
    ASSERT_TRUE(application.kill());
    ASSERT_EQ(receiver.waitForNotifications(1).size(), 1) << agent->log().constData();
    EXPECT_EQ(withoutTimes(receiver.notifications()[0]),
              QStringLiteral("snmpTrapOID.0 = vigilHealthStatusChanged; "
                             "vigilHealthCheckStatus.\"test\".\"application\" = unknown; "
                             "vigilHealthCheckPreviousStatus.0 = ok; "
                             "vigilHealthCheckSummary.\"test\".\"application\" = "
                             "No connection to the application since TIME UTC.; "
                             "vigilNotificationFirstKey.0 = test; "
                             "vigilNotificationSecondKey.0 = application; "
                             "vigilNotificationSeverity.0 = 1"));

    ASSERT_TRUE(application.start());
    application.publish(2);
    ASSERT_EQ(receiver.waitForNotifications(2).size(), 2) << agent->log().constData();
    EXPECT_TRUE(receiver.notifications()[1].startsWith(
        QStringLiteral("snmpTrapOID.0 = vigilHealthStatusChanged; "
                       "vigilHealthCheckStatus.\"test\".\"application\" = ok; "
                       "vigilHealthCheckPreviousStatus.0 = unknown; ")))
        << qPrintable(receiver.notifications()[1]);
}

TEST_F(AgentNotifications, AStaleCheckIsNotified)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address(),
               {QStringLiteral("--stale-after"), QStringLiteral("1")});
    FakeApplication application(agent->applicationPort());
    write(application, 0, "all is well");
    ASSERT_EQ(receiver.waitForNotifications(1).size(), 1) << agent->log().constData();
    EXPECT_EQ(withoutTimes(receiver.notifications()[0]),
              changed("unknown", "ok", "No update since TIME UTC."));
    EXPECT_TRUE(runUntil([&] {
        write(application, 0, "all is well again");
        return receiver.notifications().size() >= 2;
    }));
    EXPECT_EQ(receiver.notifications().value(1), changed("ok", "unknown", "all is well again"));
}

// It was forgotten without a word, and managers kept waiting for its recovery.
TEST_F(AgentNotifications, AForgottenCheckIsNotified)
{
    startAgent(
        QStringLiteral("trap2sink ") + receiver.address(),
        {QStringLiteral("--grace"), QStringLiteral("0"), QStringLiteral("--forget"), QStringLiteral("1")});
    const SnmpTool tool(agent->udpAddress());
    const QString summary = QStringLiteral("VIGIL-MIB::vigilHealthCheckSummary.\"app\".\"hc\"");
    FakeApplication application(agent->applicationPort());
    write(application, 0, "all is well");
    ASSERT_TRUE(tool.waitFor(summary, QStringLiteral("all is well")));
    application.close();
    ASSERT_EQ(receiver.waitForNotifications(2).size(), 2) << agent->log().constData();
    EXPECT_EQ(withoutTimes(receiver.notifications()[0]),
              changed("unknown", "ok", "No connection to the application since TIME UTC."));
    EXPECT_EQ(withoutTimes(receiver.notifications()[1]),
              changed("unknown", "unknown",
                      "No connection to the application since TIME UTC. The agent has forgotten the check."));
    EXPECT_TRUE(tool.waitFor(summary, support::noInstance));
}

TEST_F(AgentNotifications, AFloodIsCountedAsSentAndDropped)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address());
    const SnmpTool tool(agent->udpAddress());
    FakeApplication application(agent->applicationPort());
    constexpr int flood = 5000; // 555 a second are sent
    for (int value = 1; value <= flood; ++value)
        application.publishAndNotify("5.1", value);
    ASSERT_TRUE(tool.waitFor(support::full("5.1"), QString::number(flood)));
    const int sent = tool.get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentNotificationsSent.0")).toInt();
    const int dropped = tool.get(QStringLiteral("VIGIL-AGENT-MIB::vigilAgentNotificationsDropped.0")).toInt();
    EXPECT_GT(sent, 0);
    EXPECT_GT(dropped, 0);
    EXPECT_EQ(sent + dropped, flood);
    EXPECT_TRUE(agent->waitForLog("too many notifications at once, dropped: "));
}

TEST_F(AgentNotifications, ACleanShutdownOfAnApplicationSendsNoNotification)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address(),
               {QStringLiteral("--grace"), QStringLiteral("0")});
    FakeApplication application(agent->applicationPort());
    write(application, 0, "all is well");
    application.unset("127.3.1.200.4");
    application.close();
    EXPECT_TRUE(agent->waitForLog("has disconnected"));
    FakeApplication other(agent->applicationPort());
    other.publishAndNotify("5.1", 1);
    EXPECT_THAT(receiver.waitForNotifications(1),
                ElementsAre(QStringLiteral("snmpTrapOID.0 = vigilValueChanged; exampleEnterprise.5.1 = 1")));
}

TEST_F(AgentNotifications, AValuesNotificationHasItsIdentifierAndType)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address());
    FakeApplication application(agent->applicationPort());
    application.publishAndNotify("127.3.1.200.4.3.1.1." + checkIndex + ".1.109", 1);
    application.publishAndNotify("5.1", std::string("a text"));
    EXPECT_THAT(
        receiver.waitForNotifications(2),
        ElementsAre(QStringLiteral("snmpTrapOID.0 = vigilValueChanged; "
                                   "vigilMetricResultStatus.\"app\".\"hc\".\"m\" = warning"),
                    QStringLiteral("snmpTrapOID.0 = vigilValueChanged; exampleEnterprise.5.1 = \"a text\"")))
        << receiver.log().constData() << agent->log().constData();
}

TEST_F(AgentNotifications, AnInformArrivesOnce)
{
    // Longer than a pause of the machine: by default it comes again after a second without a response.
    startAgent(QStringLiteral("trapsess -Ci -v2c -c public -t 4 ") + receiver.address());
    FakeApplication application(agent->applicationPort());
    write(application, 2, "m is high");
    write(application, 0, "all is well");
    ASSERT_EQ(receiver.waitForNotifications(2).size(), 2);
    runUntil([] { return false; }, 4'500);
    EXPECT_THAT(receiver.notifications(), ElementsAre(changed("critical", "unknown", "m is high"),
                                                      changed("ok", "critical", "all is well")));
}

TEST_F(AgentNotifications, AReloadedConfigurationReplacesTheReceivers)
{
    startAgent(QStringLiteral("trap2sink ") + receiver.address());
    SnmptrapdProcess other;
    ASSERT_TRUE(other.start()) << other.log().constData();
    writeConfiguration(QStringLiteral("trap2sink ") + other.address());
    agent->reload();
    ASSERT_TRUE(agent->waitForLog("has been read again")) << agent->log().constData();
    FakeApplication application(agent->applicationPort());
    write(application, 2, "m is high");
    write(application, 0, "all is well");
    EXPECT_THAT(other.waitForNotifications(2), ElementsAre(changed("critical", "unknown", "m is high"),
                                                           changed("ok", "critical", "all is well")));
    EXPECT_THAT(receiver.notifications(), testing::IsEmpty());
    EXPECT_EQ(agent->stop(), 0);
}

TEST_F(AgentNotifications, AnUnresponsiveInformReceiverDoesNotDelayTheOthers)
{
    QUdpSocket silent; // bound, so the host accepts datagrams; no one reads them
    ASSERT_TRUE(support::bindToFreePort(silent));
    startAgent(QStringLiteral("trapsess -Ci -v2c -c public -t 600 127.0.0.1:%1\ntrap2sink %2")
                   .arg(silent.localPort())
                   .arg(receiver.address()));
    FakeApplication application(agent->applicationPort());
    write(application, 2, "m is high");
    EXPECT_EQ(receiver.waitForNotifications(1).size(), 1) << "long before the inform is given up";
    EXPECT_TRUE(SnmpTool(agent->udpAddress())
                    .waitFor(QStringLiteral("VIGIL-MIB::vigilHealthCheckStatus.\"app\".\"hc\""),
                             QStringLiteral("2")));
    EXPECT_TRUE(silent.hasPendingDatagrams());
    EXPECT_EQ(agent->stop(), 0);
}

TEST_F(AgentNotifications, AnSnmpV3InformReceiverWithoutEngineIdIsIgnored)
{
    QUdpSocket silent;
    ASSERT_TRUE(support::bindToFreePort(silent));
    startAgent(QStringLiteral("trapsess -Ci -v3 -t 600 %1 127.0.0.1:%2\ntrap2sink %3")
                   .arg(v3User)
                   .arg(silent.localPort())
                   .arg(receiver.address()));
    EXPECT_TRUE(agent->log().contains("error: no notifications for 127.0.0.1:")) << agent->log().constData();
    FakeApplication application(agent->applicationPort());
    write(application, 2, "m is high");
    EXPECT_EQ(receiver.waitForNotifications(1).size(), 1) << "long before a request for the id is given up";
    write(application, 0, "all is well");
    EXPECT_EQ(receiver.waitForNotifications(2).size(), 2);
    EXPECT_FALSE(silent.hasPendingDatagrams());
}

TEST_F(AgentNotifications, AnSnmpV3ReceiverWithItsEngineIdGetsInforms)
{
    SnmptrapdProcess secure("exactEngineID 0x8000000001766967696c\n"
                            "createUser operator SHA operatorAuth AES operatorPriv\n"
                            "authUser log operator priv\n");
    ASSERT_TRUE(secure.start()) << secure.log().constData();
    startAgent(
        QStringLiteral("trapsess -Ci -v3 -e 0x8000000001766967696c %1 %2").arg(v3User, secure.address()));
    FakeApplication application(agent->applicationPort());
    write(application, 2, "m is high");
    EXPECT_THAT(secure.waitForNotifications(1), ElementsAre(changed("critical", "unknown", "m is high")))
        << secure.log().constData() << agent->log().constData();
}

TEST_F(AgentNotifications, AnSnmpV3TrapIsSignedWithTheEngineIdOfTheAgentsConfiguration)
{
    SnmptrapdProcess secure(
        "createUser -e 0x80000000016167656e74 operator SHA operatorAuth AES operatorPriv\n"
        "authUser log operator priv\n");
    ASSERT_TRUE(secure.start()) << secure.log().constData();
    startAgent(QStringLiteral("exactEngineID 0x80000000016167656e74\n"
                              "createUser operator SHA operatorAuth AES operatorPriv\n"
                              "trapsess -v3 %1 %2")
                   .arg(v3User, secure.address()));
    FakeApplication application(agent->applicationPort());
    write(application, 2, "m is high");
    EXPECT_THAT(secure.waitForNotifications(1), ElementsAre(changed("critical", "unknown", "m is high")))
        << secure.log().constData() << agent->log().constData();
}
