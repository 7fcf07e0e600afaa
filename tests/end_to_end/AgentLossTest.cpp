// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "lifecycle/HostProcess.h"
#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::noInstance;
using support::SnmpTool;

namespace {

// The row of the check "a", "b", relative and as a manager names it.
const std::string relativeStatus = "127.3.1.200.4.1.1.3.1.97.1.98";
const std::string relativeSummary = "127.3.1.200.4.1.1.4.1.97.1.98";
const QString statusName = QStringLiteral("vigilHealthCheckStatus.\"a\".\"b\"");
const QString summaryName = QStringLiteral("vigilHealthCheckSummary.\"a\".\"b\"");
const QString otherName = QStringLiteral(".1.3.6.1.4.1.32473.5.1");

class AgentLoss : public testing::Test
{
protected:
    void start(const QStringList& arguments)
    {
        agent = std::make_unique<AgentProcess>(QStringList{QStringLiteral("--verbose")} + arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        tool = std::make_unique<SnmpTool>(agent->udpAddress());
    }

    std::unique_ptr<FakeApplication> connectWithARow()
    {
        auto application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish(relativeStatus, 0);
        application->publish(relativeSummary, std::string("all is well"));
        application->publish("5.1", 42);
        EXPECT_TRUE(tool->waitFor(otherName, QStringLiteral("42")));
        return application;
    }

    /// The text of summary with the time taken out, after status has become UNKNOWN.
    QString reasonOfUnknown(const QString& status, const QString& summary)
    {
        EXPECT_TRUE(tool->waitFor(status, QStringLiteral("3"))) << agent->log().constData();
        QString text = tool->get(summary);
        return text.replace(QRegularExpression(QStringLiteral("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d")),
                            QStringLiteral("TIME"));
    }

    const QString noConnection = QStringLiteral("No connection to the application since TIME UTC.");
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<SnmpTool> tool;
};

} // namespace

TEST_F(AgentLoss, ACleanShutdownRemovesAllCells)
{
    start({});
    const auto application = connectWithARow();
    application->unset("");
    application->close();
    EXPECT_TRUE(tool->waitFor(statusName, noInstance));
    EXPECT_TRUE(agent->waitForLog("has disconnected\n"));
}

TEST_F(AgentLoss, ALostApplicationsChecksTurnUnknownAndItsOtherValuesStay)
{
    start({QStringLiteral("--grace"), QStringLiteral("1")});
    connectWithARow()->close();
    EXPECT_EQ(reasonOfUnknown(statusName, summaryName), noConnection);
    EXPECT_EQ(tool->get(otherName), QStringLiteral("42"));
}

TEST_F(AgentLoss, NothingChangesDuringTheGracePeriod)
{
    start({QStringLiteral("--grace"), QStringLiteral("600")});
    connectWithARow()->close();
    ASSERT_TRUE(agent->waitForLog("without removing its 3 cells"));
    EXPECT_EQ(tool->get(statusName), QStringLiteral("0"));
    EXPECT_EQ(tool->get(summaryName), QStringLiteral("all is well"));
}

TEST_F(AgentLoss, AnApplicationDisconnectedByTheAgentIsLostToo)
{
    start({QStringLiteral("--grace"), QStringLiteral("0")});
    const auto application = connectWithARow();
    application->sendBytes(QByteArray(64, 'x'));
    EXPECT_EQ(reasonOfUnknown(statusName, summaryName), noConnection);
    EXPECT_FALSE(application->isConnected());
}

TEST_F(AgentLoss, CellsOfALostApplicationAreRemovedAfterTheForgetTime)
{
    start(
        {QStringLiteral("--grace"), QStringLiteral("600"), QStringLiteral("--forget"), QStringLiteral("1")});
    connectWithARow()->close();
    EXPECT_TRUE(tool->waitFor(statusName, noInstance));
    EXPECT_EQ(tool->get(otherName), noInstance);
}

TEST_F(AgentLoss, ACheckWithoutUpdatesTurnsUnknown)
{
    start({QStringLiteral("--stale-after"), QStringLiteral("1")});
    const auto application = connectWithARow();
    EXPECT_EQ(reasonOfUnknown(statusName, summaryName), QStringLiteral("No update since TIME UTC."));
    EXPECT_EQ(tool->get(otherName), QStringLiteral("42"));
}

TEST_F(AgentLoss, ASetOfACellOfALostApplicationFailsAtOnce)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("agent.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("rwcommunity public 127.0.0.1\n");
    file.close();
    start({QStringLiteral("--config"), file.fileName(), QStringLiteral("--set-timeout"),
           QStringLiteral("60000")});
    connectWithARow()->close();
    ASSERT_TRUE(agent->waitForLog("without removing its 3 cells"));
    const SnmpTool::Result result = tool->set({otherName, QStringLiteral("i"), QStringLiteral("1")});
    EXPECT_TRUE(result.err.contains(QStringLiteral("resourceUnavailable"))) << qPrintable(result.err);
    EXPECT_EQ(tool->get(otherName), QStringLiteral("42"));
}

TEST_F(AgentLoss, TheChecksOfAKilledApplicationAreUnknownUntilItReturns)
{
    start({QStringLiteral("--grace"), QStringLiteral("1")});
    const QString status = QStringLiteral("vigilHealthCheckStatus.\"host\".\"check\"");
    const QString summary = QStringLiteral("vigilHealthCheckSummary.\"host\".\"check\"");
    const auto startApplication = [&] {
        return std::make_unique<HostProcess>(
            QStringLiteral(PLAIN_HOST), QStringList{QStringLiteral("destroy")}, agent->applicationPort());
    };
    auto application = startApplication();
    ASSERT_TRUE(application->waitForLine(QStringLiteral("ready")));
    const QString last = QStringLiteral("vigilMetricResultStatus.\"host\".\"check\".\"metric2\"");
    ASSERT_TRUE(support::runUntil([&] { return tool->get(last) != noInstance; }));
    const QString before = tool->get(summary);

    application.reset(); // kills it
    ASSERT_TRUE(agent->waitForLog("has disconnected"));
    ASSERT_TRUE(support::runUntil([&] { return tool->get(summary) != before; }));
    EXPECT_EQ(reasonOfUnknown(status, summary), noConnection);
    EXPECT_EQ(tool->get(last), QStringLiteral("3")) << "a metric does not go on saying ok";

    application = startApplication();
    ASSERT_TRUE(application->waitForLine(QStringLiteral("ready")));
    EXPECT_TRUE(tool->waitFor(summary, before));

    application->say(QStringLiteral("go"));
    EXPECT_EQ(application->exitCode(), 0);
    EXPECT_TRUE(tool->waitFor(summary, noInstance));
    EXPECT_EQ(tool->get(status), noInstance) << "destroy() withdraws everything";
}
