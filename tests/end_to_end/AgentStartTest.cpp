// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <csignal>

#include "support/AgentProcess.h"
#include "support/FreePort.h"
#include "support/RunUntil.h"

using support::AgentProcess;

namespace {

QStringList serving(quint16 port, const QStringList& more = {})
{
    return QStringList{QStringLiteral("--standalone"),
                       QStringLiteral("udp:127.0.0.1:%1,tcp:127.0.0.1:%1").arg(port),
                       QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")} +
           more;
}

/// Expects an exit code above zero and one line with the error.
void expectRefusal(const AgentProcess::Outcome& outcome, const char* text)
{
    EXPECT_GT(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.err.contains("vigil-agent: error: ")) << outcome.err.constData();
    EXPECT_TRUE(outcome.err.contains(text)) << outcome.err.constData();
    EXPECT_FALSE(outcome.err.contains("serving")) << outcome.err.constData();
    EXPECT_TRUE(outcome.out.isEmpty());
    EXPECT_EQ(outcome.filesLeft, QStringList());
}

} // namespace

TEST(AgentStart, HelpAndVersionArePrintedToStandardOutput)
{
    const AgentProcess::Outcome help = AgentProcess::run({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains("--standalone"));
    const AgentProcess::Outcome version = AgentProcess::run({QStringLiteral("--version")});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_TRUE(version.out.startsWith("vigil-agent 1.0.0."));
    EXPECT_TRUE(version.err.isEmpty());
}

TEST(AgentStart, BadOptionValuesAreRefused)
{
    const quint16 port = AgentProcess::freePort();
    expectRefusal(AgentProcess::run({QStringLiteral("--set-timeout"), QStringLiteral("1000")}),
                  AgentProcess::isForWindows() ? "--standalone is needed" : "behind snmpd");
    expectRefusal(
        AgentProcess::run(serving(port, {QStringLiteral("--listen"), QStringLiteral("192.0.2.1:1")})),
        "loopback");
    expectRefusal(AgentProcess::run(serving(port, {QStringLiteral("--set-timeout"), QStringLiteral("soon")})),
                  "--set-timeout soon");
    expectRefusal(AgentProcess::run(serving(port, {QStringLiteral("--no-such-option")})), "no-such-option");
}

TEST(AgentStart, AnUnreadableConfigurationFileIsAnError)
{
    const quint16 port = AgentProcess::freePort();
    const QTemporaryDir directory;
    const QString missing = directory.filePath(QStringLiteral("missing.conf"));
    expectRefusal(AgentProcess::run(serving(port, {QStringLiteral("--config"), missing})),
                  "cannot read the configuration file");
    expectRefusal(AgentProcess::run(serving(port, {QStringLiteral("--config"), directory.path()})),
                  "cannot read the configuration file");
}

/// Wine shows the file's mode as rights of Windows.
TEST(AgentStart, OnWindowsOthersMayNotReadTheConfiguration)
{
    if (!AgentProcess::isForWindows())
        GTEST_SKIP() << "on this system the operator decides";
    const QTemporaryDir directory;
    QFile file(directory.filePath(QString::fromUtf8("K\xc3\xb6nig \xd0\x96.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("rocommunity public 127.0.0.1\n");
    file.close();
    const QStringList check{QStringLiteral("--check-config"), QStringLiteral("--config"), file.fileName()};
    ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    expectRefusal(AgentProcess::run(check), "holds secrets, but \"Everyone\" has rights to it");

    ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    const AgentProcess::Outcome allowed = AgentProcess::run(check);
    EXPECT_EQ(allowed.exitCode, 0) << allowed.err.constData();
    EXPECT_TRUE(allowed.out.contains("K\xc3\xb6nig \xd0\x96.conf: correct")) << allowed.out.constData();
}

/// A script would take what little was printed for the whole answer.
TEST(AgentStart, OutputThatCannotBeWrittenIsAnError)
{
    for (const QStringList& task : {QStringList{QStringLiteral("--version")}, {QStringLiteral("--help")}}) {
        QProcess agent;
        agent.setStandardOutputFile(QStringLiteral("/dev/full"));
        agent.start(AgentProcess::program(), task);
        ASSERT_TRUE(agent.waitForFinished(support::deadlineMs));
        EXPECT_EQ(agent.exitCode(), 1);
        const QByteArray err = agent.readAllStandardError();
        EXPECT_TRUE(err.contains("error: cannot write to standard output: ")) << err.constData();
    }
}

TEST(AgentStart, AnSnmpPortInUseIsAnError)
{
    QUdpSocket datagrams;
    ASSERT_TRUE(support::bindToFreePort(datagrams));
    expectRefusal(AgentProcess::run(serving(datagrams.localPort())), "cannot serve on udp:127.0.0.1:");

    QTcpServer streams;
    ASSERT_TRUE(streams.listen(QHostAddress::LocalHost));
    expectRefusal(AgentProcess::run(serving(streams.serverPort())), "cannot serve on udp:127.0.0.1:");
}

TEST(AgentStart, AnInvalidAddressIsAnError)
{
    expectRefusal(AgentProcess::run({QStringLiteral("--standalone"), QStringLiteral("nonsense:127.0.0.1:1"),
                                     QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")}),
                  "cannot serve on nonsense:127.0.0.1:1");
}

TEST(AgentStart, AnApplicationPortInUseIsAnError)
{
    QTcpServer occupant;
    ASSERT_TRUE(occupant.listen(QHostAddress::LocalHost));
    const QString taken = QStringLiteral("127.0.0.1:%1").arg(occupant.serverPort());
    expectRefusal(AgentProcess::run(serving(AgentProcess::freePort(), {QStringLiteral("--listen"), taken})),
                  "cannot listen for applications on 127.0.0.1:");
}

TEST(AgentStart, UnknownDirectivesOfTheConfigurationAreLogged)
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("agent.conf")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("rocommunity public 127.0.0.1\nroconmunity public\n");
    file.close();
    AgentProcess agent({QStringLiteral("--config"), file.fileName()});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    EXPECT_TRUE(agent.log().contains("Net-SNMP: ")) << agent.log().constData();
    EXPECT_TRUE(agent.log().contains("line 2: Warning: Unknown token: roconmunity"))
        << agent.log().constData();
}

TEST(AgentStart, SigtermAndSigintShutTheAgentDownCleanly)
{
    AgentProcess first;
    ASSERT_TRUE(first.start()) << first.log().constData();
    EXPECT_EQ(first.stop(), 0);
    EXPECT_TRUE(first.log().endsWith("vigil-agent: ending\n")) << first.log().constData();

    AgentProcess second;
    ASSERT_TRUE(second.start()) << second.log().constData();
    kill(static_cast<pid_t>(second.processId()), SIGINT);
    EXPECT_TRUE(second.waitForLog("vigil-agent: ending\n"));
}

TEST(AgentStart, NoFileIsLeft)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    EXPECT_EQ(agent.stop(), 0);
    EXPECT_EQ(agent.filesLeft(), QStringList());
}
