// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QLocalSocket>
#include <QProcess>

#include <iostream>

#include "base/wire/Protocol.h"
#include "base/wire/SnmpString.h"
#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/LoadFreeTimer.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::LoadFreeTimer;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

/// snmpd with a subagent and an application.
class Subagent : public testing::Test
{
protected:
    const QString ownObject = QStringLiteral(".1.3.6.1.2.1.1.5.0"); // sysName, which snmpd answers itself
    const QByteArray serving = "serving 1.3.6.1.4.1.32473 through snmpd";

    explicit Subagent(const QByteArray& directives = QByteArray())
        : snmpd(SnmpdProcess::openToThisHost() + directives, {QStringLiteral("-Dagentx/master")})
    {}

    void startAll(const QStringList& arguments = {QStringLiteral("--verbose")})
    {
        ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
        startAgent(arguments);
        ASSERT_TRUE(agent->waitForLog("serving ")) << agent->log().constData();
    }

    void startAgent(const QStringList& arguments = {QStringLiteral("--verbose")})
    {
        agent = std::make_unique<AgentProcess>(snmpd.agentxAddress(), arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        connectApplication();
    }

    void connectApplication()
    {
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish("5.1", 1);
        application->publish("5.2", std::string("text"));
    }

    SnmpTool manager() const { return SnmpTool(snmpd.udpAddress()); }

    SnmpTool writer() const
    {
        return SnmpTool(snmpd.udpAddress(), SnmpTool::community(QStringLiteral("private")));
    }

    /// Repeats a SET whose time for an answer has passed in a pause of the machine.
    SnmpTool::Result setInTime(const QString& value)
    {
        SnmpTool::Result result;
        support::askUntil([&] {
            result = writer().set({full("5.1"), QStringLiteral("i"), value});
            return !result.err.contains(QStringLiteral("resourceUnavailable")) ||
                   !agent->log().contains("has not answered a SET");
        });
        return result;
    }

    /// Starts a SET of 5.1 and waits until the application has been asked. The application sends no reply.
    void startHangingSet(QProcess& set)
    {
        application->onQuestion = [](const FakeApplication::Request&) {};
        set.start(QStringLiteral("snmpset"),
                  {QStringLiteral("-v2c"), QStringLiteral("-c"), QStringLiteral("private"),
                   QStringLiteral("-m"), QString(), QStringLiteral("-r0"), QStringLiteral("-t60"),
                   snmpd.udpAddress(), full("5.1"), QStringLiteral("i"), QStringLiteral("2")});
        ASSERT_TRUE(support::runUntil([&] { return !application->questions().empty(); }));
    }

    /// How long the agent takes to end after SIGTERM; it has to end well.
    qint64 stopMs()
    {
        const LoadFreeTimer timer({agent->processId()});
        EXPECT_EQ(agent->stop(), 0);
        return timer.elapsedMs();
    }

    SnmpdProcess snmpd;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
};

/// As snmpd is by default.
class ImpatientSnmpd : public Subagent
{
protected:
    ImpatientSnmpd() : Subagent("agentXTimeout 1\n") {}
};

} // namespace

TEST_F(Subagent, ValuesAreServedThroughSnmpd)
{
    startAll();
    EXPECT_TRUE(manager().waitFor(full("5.2"), QStringLiteral("\"text\"")));
    EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("1"));
    const QStringList cells{full("5.1") + QStringLiteral(" 1"), full("5.2") + QStringLiteral(" \"text\"")};
    EXPECT_EQ(manager().walk(full("5")), cells);
    EXPECT_EQ(manager().walk(full("5"), QStringLiteral("snmpwalk")), cells);
}

TEST(SubagentByName, JoinsAnSnmpdGivenByNameAgain)
{
    const QString port = QString::number(AgentProcess::freePort());
    SnmpdProcess snmpd(SnmpdProcess::openToThisHost() + "agentXSocket tcp:127.0.0.1:" + port.toLatin1() +
                       '\n');
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    AgentProcess agent(QStringLiteral("tcp:localhost:") + port, {});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    ASSERT_TRUE(agent.waitForLog("serving ")) << agent.log().constData();
    ASSERT_TRUE(snmpd.stop());
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    EXPECT_TRUE(agent.waitForLog("serving ", 2)) << agent.log().constData();
    EXPECT_EQ(agent.stop(), 0);
}

TEST_F(Subagent, ASetReachesTheApplicationThroughSnmpd)
{
    startAll();
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    EXPECT_EQ(setInTime(QStringLiteral("7")).exitCode, 0);
    EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("7"));
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 1; }));
    EXPECT_EQ(application->commits().front().value, "7");
}

TEST_F(Subagent, ARefusedSetChangesNothing)
{
    startAll();
    application->onQuestion = [&](const FakeApplication::Request& question) {
        application->answer(question, 1);
    };
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    const SnmpTool::Result result = setInTime(QStringLiteral("7"));
    EXPECT_TRUE(result.err.contains(QStringLiteral("wrongValue"))) << qPrintable(result.err);
    EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("1"));
    EXPECT_TRUE(application->commits().empty());
}

TEST_F(Subagent, AHungApplicationDelaysSnmpdAtMostForTheSetTimeout)
{
    startAll({QStringLiteral("--set-timeout"), QStringLiteral("900")});
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    QProcess set;
    startHangingSet(set);
    const LoadFreeTimer timer({agent->processId()});
    QProcess get;
    get.start(QStringLiteral("snmpget"),
              {QStringLiteral("-v2c"), QStringLiteral("-c"), QStringLiteral("public"), QStringLiteral("-m"),
               QString(), QStringLiteral("-r0"), QStringLiteral("-t60"), snmpd.udpAddress(), ownObject});
    ASSERT_TRUE(agent->waitForLog("has not answered a SET")) << agent->log().constData();
    EXPECT_LT(timer.elapsedMs(), 2'000);
    ASSERT_TRUE(support::runUntil([&] { return set.state() == QProcess::NotRunning; }));
    EXPECT_TRUE(set.readAllStandardError().contains("resourceUnavailable"));
    ASSERT_TRUE(support::runUntil([&] { return get.state() == QProcess::NotRunning; }));
    EXPECT_EQ(get.exitCode(), 0) << "snmpd answers what it was asked meanwhile";
    EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("1"));
    EXPECT_EQ(agent->log().count(serving), 1) << "snmpd has not given the agent up";
}

TEST_F(Subagent, FurtherSetsToAHungApplicationDoNotDelaySnmpd)
{
    startAll({QStringLiteral("--set-timeout"), QStringLiteral("900")});
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    application->onQuestion = [](const FakeApplication::Request&) {};
    const QStringList triple{full("5.1"), QStringLiteral("i"), QStringLiteral("2")};
    const auto isRefused = [&] { return writer().set(triple).err.contains(QStringLiteral("resourceUnava")); };
    ASSERT_TRUE(isRefused());
    const LoadFreeTimer timer({agent->processId(), snmpd.processId()});
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(isRefused());
    EXPECT_NE(manager().get(ownObject), QString());
    EXPECT_LT(timer.elapsedMs(), 900) << "less than one time-out";
    EXPECT_EQ(application->questions().size(), 1u);

    application->onQuestion = [&](const FakeApplication::Request& question) {
        application->answer(question, 0);
    };
    application->answer(application->questions().front(), 0);
    EXPECT_TRUE(support::runUntil([&] { return writer().set(triple).exitCode == 0; }, 4'000));
    EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("2"));
}

TEST_F(Subagent, OnlyTheSubtreeIsRegistered)
{
    startAll({QStringLiteral("--subtree"), QStringLiteral("1.3.6.1.4.1.32473.5")});
    EXPECT_TRUE(agent->log().contains("serving 1.3.6.1.4.1.32473.5 through snmpd"));
    application->publish("4.1", 41);
    application->publish("6.1", 61);
    application->publish("5.3", 53);
    EXPECT_TRUE(manager().waitFor(full("5.3"), QStringLiteral("53")));
    EXPECT_EQ(manager().walk(full("5")),
              (QStringList{full("5.1") + QStringLiteral(" 1"), full("5.2") + QStringLiteral(" \"text\""),
                           full("5.3") + QStringLiteral(" 53")}));
    EXPECT_TRUE(manager().get(full("4.1")).startsWith(QStringLiteral("No Such")));
    EXPECT_TRUE(manager().get(full("6.1")).startsWith(QStringLiteral("No Such")));
}

TEST_F(Subagent, TwoAgentsShareTheEnterpriseWhenTheirSubtreesDiffer)
{
    startAll({QStringLiteral("--subtree"), QStringLiteral("1.3.6.1.4.1.32473.5")});
    AgentProcess second(snmpd.agentxAddress(),
                        {QStringLiteral("--subtree"), QStringLiteral("1.3.6.1.4.1.32473.6")});
    ASSERT_TRUE(second.start()) << second.log().constData();
    FakeApplication other(second.applicationPort());
    other.publish("6.1", 61);
    EXPECT_TRUE(manager().waitFor(full("6.1"), QStringLiteral("61")));
    EXPECT_TRUE(manager().waitFor(full("5.2"), QStringLiteral("\"text\"")));
}

TEST_F(Subagent, EveryCellIsBackWithinFiveSecondsOfEachSnmpdRestart)
{
    startAll();
    for (int i = 0; i < 500; ++i)
        application->publish("7." + std::to_string(i), i);
    ASSERT_TRUE(manager().waitFor(full("7.499"), QStringLiteral("499")));
    const QStringList cells = manager().walk(full("7"));
    ASSERT_EQ(cells.size(), 500);
    for (int restart = 0; restart < 5; ++restart) {
        ASSERT_TRUE(restart % 2 == 0 ? snmpd.stop() : snmpd.kill());
        ASSERT_TRUE(agent->waitForLog("the connection to snmpd", restart + 1));
        ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
        const LoadFreeTimer timer({agent->processId(), snmpd.processId()});
        ASSERT_TRUE(agent->waitForLog(serving, restart + 2)) << agent->log().constData();
        const qint64 elapsed = timer.elapsedMs();
        EXPECT_EQ(manager().get(full("7.499")), QStringLiteral("499"));
        EXPECT_LT(elapsed, 5'000);
        RecordProperty("servedAgainAfterMs" + std::to_string(restart), static_cast<int>(elapsed));
        std::cout << "served again " << elapsed << " ms after snmpd's return" << std::endl;
        EXPECT_EQ(manager().walk(full("7")), cells);
    }
    EXPECT_TRUE(application->isConnected());
}

TEST_F(Subagent, ValuesPublishedWhileSnmpdIsAwayAreServedAfterwards)
{
    startAll();
    ASSERT_TRUE(snmpd.kill());
    application->publish("5.1", 2);
    application->publish("5.3", 3);
    application->unset("5.2");
    ASSERT_TRUE(agent->waitForLog("5.2 unset"));
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    EXPECT_TRUE(manager().waitFor(full("5.3"), QStringLiteral("3")));
    EXPECT_EQ(manager().walk(full("5")),
              (QStringList{full("5.1") + QStringLiteral(" 2"), full("5.3") + QStringLiteral(" 3")}));
}

TEST_F(Subagent, AStartWithoutSnmpdWaitsForItAndLogsThatOnce)
{
    startAgent();
    ASSERT_TRUE(agent->waitForLog("cannot join snmpd")) << agent->log().constData();
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    EXPECT_TRUE(manager().waitFor(full("5.2"), QStringLiteral("\"text\"")));
    EXPECT_EQ(agent->log().count("cannot join snmpd"), 1) << agent->log().constData();
}

TEST_F(Subagent, AKilledAgentRegistersAgainAfterARestart)
{
    startAll();
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(agent->kill());
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        connectApplication();
        EXPECT_TRUE(manager().waitFor(full("5.2"), QStringLiteral("\"text\""))) << agent->log().constData();
    }
}

TEST_F(Subagent, ARefusedRegistrationIsLoggedOnceAndRetriedUntilItSucceeds)
{
    startAll();
    AgentProcess second(snmpd.agentxAddress(), {});
    ASSERT_TRUE(second.start()) << second.log().constData();
    FakeApplication other(second.applicationPort());
    other.publish("5.1", 100);
    ASSERT_TRUE(second.waitForLog("refuses to register")) << second.log().constData();
    ASSERT_TRUE(snmpd.waitForLog("duplicate registration", 3)) << snmpd.log().constData();
    EXPECT_EQ(manager().get(full("5.1")), QStringLiteral("1")) << "the first agent keeps the subtree";
    ASSERT_TRUE(agent->kill());
    EXPECT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("100")));
    EXPECT_EQ(second.log().count("refuses to register"), 1) << second.log().constData();
}

TEST_F(ImpatientSnmpd, LetsADroppedAgentJoinAgain)
{
    startAll();
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    agent->suspend();
    const bool isGivenUp = support::runUntil([&] {
        manager().run(QStringLiteral("snmpget"), {full("5.1")},
                      {QStringLiteral("-r0"), QStringLiteral("-t3")});
        return manager().get(full("5.1")).startsWith(QStringLiteral("No Such"));
    });
    agent->resume();
    EXPECT_TRUE(isGivenUp) << snmpd.log().constData();
    EXPECT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1"))) << agent->log().constData();
}

TEST_F(Subagent, ApplicationsAreServedWhileSnmpdHangs)
{
    startAll();
    snmpd.suspend();
    application->publish("5.3", 3);
    EXPECT_TRUE(agent->waitForLog("5.3 = 3"));
    snmpd.resume();
    EXPECT_TRUE(manager().waitFor(full("5.3"), QStringLiteral("3")));
    EXPECT_EQ(agent->log().count(serving), 1) << "the session has outlived it";
}

TEST_F(Subagent, ApplicationsAreServedWhileSnmpdTakesNoNotifications)
{
    startAll();
    snmpd.suspend();
    base::SnmpString record;
    record.oid = "5.9";
    record.value = std::string(1'000, 'x');
    QByteArray payload;
    record.serialize(payload);
    for (int i = 0; i < 400; ++i) // more than the system's buffer takes
        application->sendFrame(base::SnmpStringType, base::ValueAndNotify, payload);
    EXPECT_TRUE(support::runUntil([&] { // in a second with room for another line in the log
        application->publish("5.3", 3);
        return agent->log().contains("5.3 = 3");
    }));
    EXPECT_TRUE(agent->waitForLog("the connection to snmpd")) << "the agent has given up sending";
    snmpd.resume();
    EXPECT_TRUE(manager().waitFor(full("5.3"), QStringLiteral("3")));
    EXPECT_LT(stopMs(), 1'000);
}

TEST_F(Subagent, ApplicationsAreServedWhileSnmpdAcceptsNoConnection)
{
    ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
    snmpd.suspend();
    std::vector<std::unique_ptr<QLocalSocket>> queue; // as much as snmpd's socket takes, and more
    for (int i = 0; i < 50; ++i) {
        queue.push_back(std::make_unique<QLocalSocket>());
        queue.back()->connectToServer(snmpd.agentxAddress());
    }
    startAgent();
    ASSERT_TRUE(agent->waitForLog("cannot join snmpd"));
    EXPECT_TRUE(agent->waitForLog("5.1 = 1"));
    for (int i = 2; i < 5; ++i) { // however often it tries to join in between
        application->publish("5.1", i);
        EXPECT_TRUE(agent->waitForLog("5.1 = " + QByteArray::number(i)));
    }
    queue.clear();
    snmpd.resume();
    EXPECT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("4"))) << agent->log().constData();
    EXPECT_LT(stopMs(), 1'000);
}

TEST_F(Subagent, TheAgentSurvivesAnSnmpdKilledDuringASet)
{
    startAll({QStringLiteral("--verbose"), QStringLiteral("--set-timeout"), QStringLiteral("500")});
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
        connectApplication();
        ASSERT_TRUE(agent->waitForLog("5.1 = 1", i + 2)) << "the SET must reach the new application";
        QProcess set;
        startHangingSet(set);
        ASSERT_TRUE(snmpd.kill());
        ASSERT_TRUE(snmpd.start()) << snmpd.log().constData();
        set.kill();
        set.waitForFinished();
    }
    EXPECT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1"))) << agent->log().constData();
    EXPECT_EQ(agent->stop(), 0) << agent->log().constData();
}

TEST_F(Subagent, SigtermUnregistersTheSubtreeWithinASecond)
{
    startAll();
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    EXPECT_LT(stopMs(), 1'000);
    EXPECT_TRUE(manager().get(full("5.1")).startsWith(QStringLiteral("No Such")));
}

TEST_F(Subagent, SigtermEndsItWithinASecondDuringASet)
{
    startAll();
    ASSERT_TRUE(manager().waitFor(full("5.1"), QStringLiteral("1")));
    QProcess set;
    startHangingSet(set);
    EXPECT_LT(stopMs(), 1'000);
    EXPECT_TRUE(application->commits().empty());
    set.kill();
    set.waitForFinished();
}

TEST_F(Subagent, SigtermEndsItWithinASecondWhileSnmpdIsAway)
{
    startAgent();
    ASSERT_TRUE(agent->waitForLog("cannot join snmpd"));
    EXPECT_LT(stopMs(), 1'000);
}

TEST_F(Subagent, SigtermEndsItWithinASecondWhileSnmpdHangs)
{
    startAll();
    snmpd.suspend();
    EXPECT_LT(stopMs(), 1'000);
    snmpd.resume();
}

TEST_F(Subagent, SigtermEndsItWithinASecondWhileItJoinsAHangingSnmpd)
{
    ASSERT_TRUE(snmpd.start());
    snmpd.suspend();
    startAgent();
    ASSERT_TRUE(agent->waitForLog("cannot join snmpd"));
    EXPECT_LT(stopMs(), 1'000);
    snmpd.resume();
}
