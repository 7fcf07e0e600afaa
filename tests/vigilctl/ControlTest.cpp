// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// vigilctl and a real agent.

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>
#include <vector>

#include <unistd.h>

#include "support/AgentProcess.h"
#include "support/AsUser.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmptrapdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::runUntil;
using support::SnmpTool;

namespace {

class ControlTest : public testing::Test
{
protected:
    struct Outcome
    {
        int exitCode;
        QByteArray out;
        QByteArray err;
    };

    void startAgent(const QStringList& arguments = {})
    {
        agent = std::make_unique<AgentProcess>(
            QStringList{QStringLiteral("--grace"), QStringLiteral("0"), QStringLiteral("--control"), path(),
                        QStringLiteral("--state-directory"), directory.path()} +
            arguments);
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        write("hc", 0, "all is well");
    }

    /// Writes a check with a key of two letters.
    void write(const std::string& key, int status, const std::string& summary)
    {
        const std::string index =
            "3.97.112.112.2." + std::to_string(key[0]) + '.' + std::to_string(key[1]); // "app", key
        application->publish("127.3.1.200.4.1.1.3." + index, status);
        application->publish("127.3.1.200.4.1.1.4." + index, summary);
        SnmpTool(agent->udpAddress())
            .waitFor(
                QStringLiteral("VIGIL-MIB::vigilHealthCheckSummary.%1").arg(QString::fromStdString(index)),
                QString::fromStdString(summary));
    }

    QString path() const { return directory.filePath(QStringLiteral("control")); }

    Outcome run(const QStringList& arguments, const QStringList& wrapper = {}) const
    {
        QStringList words = wrapper;
        words << QStringLiteral(VIGILCTL) << QStringLiteral("--control") << path() << arguments;
        QProcess program;
        const QString name = words.takeFirst();
        program.start(name, words);
        EXPECT_TRUE(runUntil([&] { return program.state() == QProcess::NotRunning; }));
        return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
    }

    Outcome run(const char* command) const
    {
        return run(QString::fromLatin1(command).split(QLatin1Char(' ')));
    }

    const QTemporaryDir directory;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;
};

const QString mutedColumn = QStringLiteral("VIGIL-AGENT-MIB::vigilAgentCheckMuted.1");

} // namespace

TEST_F(ControlTest, StatusNeedsNoHttp)
{
    startAgent();
    write("db", 2, "no answer");
    const Outcome outcome = run("status");
    EXPECT_EQ(outcome.exitCode, 2) << outcome.err.constData();
    EXPECT_TRUE(outcome.out.contains(": 1 critical, 0 warning, 0 unknown, 1 ok\n"))
        << outcome.out.constData();
    EXPECT_TRUE(outcome.out.contains("app/db, for ")) << outcome.out.constData();
}

TEST_F(ControlTest, AMutedCheckIsSilentUntilTheMuteEnds)
{
    support::SnmptrapdProcess receiver;
    ASSERT_TRUE(receiver.start()) << receiver.log().constData();
    QFile file(directory.filePath(QStringLiteral("agent.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("rocommunity public 127.0.0.1\ntrap2sink " + receiver.address().toUtf8() + '\n');
    file.close();
    startAgent({QStringLiteral("--config"), file.fileName()});
    ASSERT_EQ(run("mute app/hc 2h").exitCode, 0);
    write("hc", 2, "in maintenance");
    write("db", 2, "no answer"); // if the muted check sent anything, it would come first
    EXPECT_TRUE(receiver.waitForNotifications(1).value(0).contains(QLatin1String("no answer")));
    EXPECT_EQ(run("unmute app/hc").out, "app/hc is no longer muted\n");
    const QStringList both = receiver.waitForNotifications(2);
    ASSERT_EQ(both.size(), 2);
    EXPECT_TRUE(both[1].contains(QLatin1String("in maintenance"))) << qPrintable(both[1]);
}

TEST_F(ControlTest, AMuteIsShown)
{
    startAgent();
    const Outcome outcome = run("mute app/hc 2h --json");
    const QJsonObject reply = QJsonDocument::fromJson(outcome.out).object();
    EXPECT_EQ(reply[QLatin1String("name")].toString(), QStringLiteral("app/hc")) << outcome.err.constData();
    const QString until = reply[QLatin1String("mutedUntil")].toString();
    EXPECT_TRUE(until.endsWith(QLatin1Char('Z')));

    const int seconds = SnmpTool(agent->udpAddress()).get(mutedColumn).toInt();
    EXPECT_GT(seconds, 7000);
    EXPECT_LE(seconds, 7200);
    EXPECT_TRUE(run("status").out.contains("OK  app/hc, for ")) << "muted, so it is listed";
    EXPECT_TRUE(run("status").out.contains(", muted for another "));
    const QJsonObject document = QJsonDocument::fromJson(run("status --json").out).object();
    EXPECT_EQ(
        document[QLatin1String("checks")].toArray()[0].toObject()[QLatin1String("mutedUntil")].toString(),
        until);
    EXPECT_TRUE(agent->waitForLog("has muted the check app/hc until " + until.toUtf8()));
}

TEST_F(ControlTest, AMuteOutlastsARestartOfTheAgent)
{
    startAgent();
    ASSERT_EQ(run("mute 1 2h").exitCode, 0);
    application.reset();
    EXPECT_EQ(agent->stop(), 0);
    startAgent();
    EXPECT_GT(SnmpTool(agent->udpAddress()).get(mutedColumn).toInt(), 7000);
    EXPECT_EQ(run("unmute 1").exitCode, 0);
    EXPECT_EQ(SnmpTool(agent->udpAddress()).get(mutedColumn), QStringLiteral("0"));
}

TEST_F(ControlTest, ForgetRemovesALostApplication)
{
    startAgent();
    const Outcome refused = run("forget 1");
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_EQ(refused.err, "vigilctl: application 1 is connected; only a lost one can be forgotten\n");
    application->close();
    EXPECT_TRUE(support::askUntil([&] { return run("status").out.contains(" is lost\n"); }));
    const Outcome forgotten = run("forget 1");
    EXPECT_EQ(forgotten.exitCode, 0) << forgotten.err.constData();
    EXPECT_TRUE(forgotten.out.endsWith(" is forgotten, cells removed: 2\n")) << forgotten.out.constData();
    EXPECT_FALSE(run("status").out.contains("app/hc"));
    EXPECT_EQ(run("forget 1").exitCode, 3);
}

TEST_F(ControlTest, AMistakeChangesNothing)
{
    startAgent();
    EXPECT_EQ(run("mute app/other 2h").err, "vigilctl: there is no check app/other\n");
    EXPECT_EQ(run("unmute app/hc").err, "vigilctl: the check is not muted\n");
    EXPECT_EQ(run("forget 7").err, "vigilctl: there is no application 7\n");
    EXPECT_EQ(run("mute app/hc tomorrow").exitCode, 3);
}

// vigilctl said that only root and the agent's own user may ask.
TEST_F(ControlTest, ABusyAgentSaysSo)
{
    startAgent();
    std::vector<std::unique_ptr<QLocalSocket>> silent;
    for (int i = 0; i < 8; ++i) {
        silent.push_back(std::make_unique<QLocalSocket>());
        silent.back()->connectToServer(path());
    }
    for (const char* command : {"status", "mute app/hc 2h"}) {
        const Outcome outcome = run(command);
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_EQ(outcome.err, "vigilctl: the agent is busy with 8 other requests; try again\n");
    }
}

// The file's rights are the first hurdle. Here they are none.
TEST_F(ControlTest, AnotherUserIsRefusedByTheKernelsWord)
{
    if (!support::canActForUsers())
        GTEST_SKIP() << "only root can act for other users";
    startAgent();
    ASSERT_EQ(chmod(directory.path().toLocal8Bit().constData(), 0755), 0);
    ASSERT_EQ(chmod(path().toLocal8Bit().constData(), 0666), 0);
    const QStringList asUser{QStringLiteral("setpriv"), QStringLiteral("--reuid"),
                             QString::number(support::firstUser), QStringLiteral("--clear-groups")};
    if (QProcess::execute(asUser.first(), asUser.mid(1) + QStringList{QStringLiteral("test"),
                                                                      QStringLiteral("-w"), path()}) != 0)
        GTEST_SKIP() << "other users cannot reach the temporary folder";
    const Outcome outcome =
        run({QStringLiteral("mute"), QStringLiteral("app/hc"), QStringLiteral("2h")}, asUser);
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_TRUE(outcome.err.contains("only root and the agent's own user may ask"))
        << outcome.err.constData();
    EXPECT_EQ(SnmpTool(agent->udpAddress()).get(mutedColumn), QStringLiteral("0"));
}

TEST_F(ControlTest, AMissingAgentIsReported)
{
    const Outcome outcome = run("mute app/hc 2h");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_TRUE(outcome.err.startsWith("vigilctl: no answer from the agent at " + path().toUtf8()))
        << outcome.err.constData();
}
