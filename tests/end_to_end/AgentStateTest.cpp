// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::noInstance;
using support::SnmpTool;

namespace {

/// An agent that is started several times with the same state directory.
class AgentState : public testing::Test
{
protected:
    void start(const QStringList& arguments = {})
    {
        agent = std::make_unique<AgentProcess>(
            QStringList{QStringLiteral("--verbose"), QStringLiteral("--grace"), QStringLiteral("1"),
                        QStringLiteral("--state-directory"), directory.path()} +
            arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        tool = std::make_unique<SnmpTool>(agent->udpAddress());
    }

    std::unique_ptr<FakeApplication> connectWithARow(int status)
    {
        auto application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish(relativeStatus, status);
        application->publish(relativeSummary, std::string("so it is"));
        EXPECT_TRUE(tool->waitFor(summaryName, QStringLiteral("so it is")));
        return application;
    }

    /// Returns the summary of the lost check.
    QString crash()
    {
        connectWithARow(0)->close();
        EXPECT_TRUE(tool->waitFor(statusName, QStringLiteral("3"))) << agent->log().constData();
        return tool->get(summaryName);
    }

    QByteArray content(const char* name) const
    {
        QFile file(directory.filePath(QLatin1String(name)));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    const std::string relativeStatus = "127.3.1.200.4.1.1.3.1.97.1.98";
    const std::string relativeSummary = "127.3.1.200.4.1.1.4.1.97.1.98";
    const QString statusName = full(relativeStatus.c_str());
    const QString summaryName = full(relativeSummary.c_str());
    const QTemporaryDir directory;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<SnmpTool> tool;
};

} // namespace

TEST_F(AgentState, ALostCheckIsKeptOverARestart)
{
    start();
    const QString lost = crash();
    EXPECT_EQ(agent->stop(), 0);
    start();
    EXPECT_EQ(tool->get(statusName), QStringLiteral("3"));
    EXPECT_EQ(tool->get(summaryName), lost);
    const auto application = connectWithARow(0);
    EXPECT_EQ(tool->get(statusName), QStringLiteral("0"));
    application->unset("");
    ASSERT_TRUE(tool->waitFor(statusName, noInstance));
    EXPECT_EQ(agent->stop(), 0);
    start();
    EXPECT_EQ(tool->get(statusName), noInstance);
}

TEST_F(AgentState, ALostCheckIsKeptWhenTheAgentIsKilled)
{
    start();
    const QString lost = crash();
    ASSERT_TRUE(support::runUntil([&] { return content("state").contains("lost "); }));
    ASSERT_TRUE(agent->kill());
    start();
    EXPECT_EQ(tool->get(summaryName), lost);
}

TEST_F(AgentState, ACheckLostLongBeforeTheRestartIsForgottenAloud)
{
    QFile file(directory.filePath(QStringLiteral("state")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("vigil-agent-state-1\nlost 2026-01-31T12:34:56Z unknown 4711 127.0.0.1 40112 shop\n"
               "check 2 1.97.1.98 down\nnotified 2 1.97.1.98\nend\n");
    file.close();
    start({QStringLiteral("--forget"), QStringLiteral("60")});
    EXPECT_TRUE(agent->waitForLog("application 1 is forgotten, cells removed: 2"));
    EXPECT_EQ(tool->get(statusName), noInstance);
    EXPECT_TRUE(agent->waitForLog("notification about"));
    EXPECT_TRUE(support::runUntil([&] { return content("state") == "vigil-agent-state-1\nend\n"; }));
}

// Managers knew the check as CRITICAL for good: its application was connected when the agent ended, and never
// came back.
TEST_F(AgentState, AnAlarmOfAnApplicationThatDoesNotReturnIsNoLongerTrue)
{
    start();
    const auto application = connectWithARow(2);
    ASSERT_TRUE(support::runUntil([&] { return content("state").contains("connected "); }));
    ASSERT_TRUE(agent->kill());
    start();
    EXPECT_TRUE(tool->waitFor(statusName, QStringLiteral("3"))) << agent->log().constData();
    EXPECT_TRUE(tool->get(summaryName).startsWith(QStringLiteral("No connection to the application since ")));
    EXPECT_TRUE(agent->waitForLog("notification about"));
}

TEST_F(AgentState, AnAlarmOfAnApplicationThatReturnsIsNotSentAgain)
{
    const QStringList longGrace{QStringLiteral("--grace"), QStringLiteral("3600")};
    start(longGrace);
    connectWithARow(2);
    ASSERT_TRUE(
        support::runUntil([&] { return content("state").contains("check 2 1.97.1.98 so%20it%20is"); }));
    EXPECT_EQ(agent->stop(), 0);
    start(longGrace);
    EXPECT_EQ(tool->get(statusName), QStringLiteral("2")) << "within the grace period";
    const auto application = connectWithARow(2);
    application->publish(relativeStatus, 0);
    application->publish(relativeSummary, std::string("all is well"));
    EXPECT_TRUE(agent->waitForLog("notification about"));
    EXPECT_EQ(agent->log().count("notification about"), 1) << agent->log().constData();
    EXPECT_TRUE(support::runUntil([&] { return content("state") == "vigil-agent-state-1\nend\n"; }));
}

// Each of the two replaced the other one's files.
TEST_F(AgentState, ASecondAgentIsRefused)
{
    start();
    const AgentProcess::Outcome second = AgentProcess::run(
        {QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:%1").arg(AgentProcess::freePort()),
         QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"), QStringLiteral("--state-directory"),
         directory.path()});
    EXPECT_EQ(second.exitCode, 1);
    EXPECT_TRUE(second.err.contains("error: another agent uses the state directory "))
        << second.err.constData();
    EXPECT_TRUE(content("engine").contains("boots 1\n")) << "the second has not touched it";
    ASSERT_TRUE(agent->kill());
    start();
    EXPECT_FALSE(agent->log().contains("lock")) << agent->log().constData();
}

TEST_F(AgentState, ADamagedFileIsNotFatal)
{
    QFile file(directory.filePath(QStringLiteral("state")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("vigil-agent-state-1\nlost 2026-01-31T12:34:56Z unknown 4711 127.0.0.1 40112 shop\nnonsense\n"
               "check 2 1.97.1.99 down\n\nend\n");
    file.close();
    start({QStringLiteral("--forget"), QStringLiteral("0")});
    EXPECT_TRUE(agent->waitForLog("2 lines of the state file "));
    EXPECT_TRUE(agent->waitForLog("cannot be used, the first is line 3; the agent goes on with the others"));
    EXPECT_EQ(tool->get(full("127.3.1.200.4.1.1.3.1.97.1.99")), QStringLiteral("3"));
    crash();
    EXPECT_EQ(agent->stop(), 0);
    EXPECT_TRUE(content("state").contains("check 0 1.97.1.98 so%20it%20is")) << content("state").constData();
}

TEST_F(AgentState, ADirectoryThatCannotBeWrittenIsNotFatal)
{
    agent = std::make_unique<AgentProcess>(
        QStringList{QStringLiteral("--state-directory"), directory.filePath(QStringLiteral("none"))});
    ASSERT_TRUE(agent->start()) << agent->log().constData();
    EXPECT_TRUE(agent->waitForLog("cannot write the state file "));
    EXPECT_EQ(agent->stop(), 0);
}

// A disk that was full for a moment kept the state out of the file until the next change.
TEST_F(AgentState, AStateThatCouldNotBeWrittenIsWrittenLater)
{
    const QString missing = directory.filePath(QStringLiteral("later"));
    start({QStringLiteral("--state-directory"), missing});
    crash();
    EXPECT_TRUE(agent->waitForLog("cannot write the state file " + missing.toLocal8Bit() + "/state"));
    ASSERT_TRUE(QDir().mkdir(missing));
    EXPECT_TRUE(support::runUntil([&] { return content("later/state").contains("check 0 1.97.1.98"); }));
}

TEST_F(AgentState, TheSnmpEngineIsKeptAndItsBootsAreCounted)
{
    start();
    EXPECT_EQ(agent->stop(), 0);
    const QList<QByteArray> first = content("engine").split('\n');
    start();
    ASSERT_TRUE(agent->kill());
    start();
    const QList<QByteArray> third = content("engine").split('\n');
    EXPECT_EQ(first.value(1).left(5), "id 0x");
    EXPECT_EQ(third.value(1), first.value(1));
    EXPECT_EQ(first.value(2), "boots 1");
    EXPECT_EQ(third.value(2), "boots 3") << "also after a crash";
}
