// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent with a socket from the service manager.

#include <gtest/gtest.h>

#include <QProcessEnvironment>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "support/AgentProcess.h"
#include "support/Deadline.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/FreePort.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::SnmpTool;

namespace {

/// Runs agents one after the other, all with the same socket, as the service manager does.
class PassedSocket : public testing::Test
{
protected:
    ~PassedSocket() override
    {
        stop();
        if (m_inherited >= 0)
            close(m_inherited);
    }

    /// The agents get a copy of it.
    void pass(qintptr descriptor) { m_inherited = fcntl(static_cast<int>(descriptor), F_DUPFD, 20); }

    void start(const char* count = "1", const char* process = "$$", const QStringList& arguments = {})
    {
        snmpPort = AgentProcess::freePort();
        const QString script = QStringLiteral("exec 3<&%1 %1<&-; LISTEN_PID=%2 LISTEN_FDS=%3 exec \"$@\"")
                                   .arg(m_inherited)
                                   .arg(QLatin1String(process), QLatin1String(count));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TMPDIR"), m_directory.path()); // a killed agent removes nothing
        agent.setProcessEnvironment(environment);
        agent.start(QStringLiteral("bash"),
                    QStringList{QStringLiteral("-c"), script, QStringLiteral("bash"), AgentProcess::program(),
                                QStringLiteral("--standalone"), snmpAddress()} +
                        arguments);
    }

    void stop()
    {
        agent.kill();
        agent.waitForFinished(support::deadlineMs);
    }

    bool waitForLog(const QByteArray& text)
    {
        return support::runUntil([&] { return (log += agent.readAllStandardError()).contains(text); });
    }

    /// The agent ends with this error.
    void expectError(const QByteArray& text)
    {
        EXPECT_TRUE(agent.waitForFinished(support::deadlineMs));
        EXPECT_EQ(agent.exitCode(), 1);
        EXPECT_TRUE(waitForLog(text)) << log.constData();
    }

    QString snmpAddress() const { return QStringLiteral("udp:127.0.0.1:%1").arg(snmpPort); }

    QProcess agent;
    QByteArray log;
    quint16 snmpPort = 0;

private:
    const QTemporaryDir m_directory;
    int m_inherited = -1;
};

} // namespace

TEST_F(PassedSocket, KeepsThePortAndTheConnectsWhileTheAgentIsAway)
{
    QTcpServer manager;
    ASSERT_TRUE(manager.listen(QHostAddress::LocalHost));
    pass(manager.socketDescriptor());
    manager.pauseAccepting();

    FakeApplication before(manager.serverPort());
    before.publish("5.1", 1);
    start();
    EXPECT_TRUE(
        waitForLog("listening for applications on 127.0.0.1:" + QByteArray::number(manager.serverPort())))
        << log.constData();
    EXPECT_TRUE(SnmpTool(snmpAddress()).waitFor(full("5.1"), QStringLiteral("1")));

    stop();
    QTcpServer squatter;
    EXPECT_FALSE(squatter.listen(QHostAddress::LocalHost, manager.serverPort()));
    FakeApplication between(manager.serverPort());
    ASSERT_TRUE(between.isConnected());
    between.publish("5.2", 2);
    start();
    EXPECT_TRUE(SnmpTool(snmpAddress()).waitFor(full("5.2"), QStringLiteral("2")));
}

TEST_F(PassedSocket, IsUsedInPlaceOfTheOption)
{
    QTcpServer manager;
    ASSERT_TRUE(manager.listen(QHostAddress::LocalHost));
    pass(manager.socketDescriptor());
    start("1", "$$", {QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")});
    EXPECT_TRUE(waitForLog("--listen has no effect: the service manager passes the socket of 127.0.0.1:" +
                           QByteArray::number(manager.serverPort())));
}

TEST_F(PassedSocket, OfAnotherProcessIsIgnored)
{
    QTcpServer manager;
    ASSERT_TRUE(manager.listen(QHostAddress::LocalHost));
    pass(manager.socketDescriptor());
    start("1", "1", {QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0")});
    EXPECT_TRUE(waitForLog("listening for applications on 127.0.0.1:"));
    EXPECT_FALSE(log.contains(QByteArray::number(manager.serverPort()))) << log.constData();
}

TEST_F(PassedSocket, MustBeOne)
{
    QTcpServer manager;
    ASSERT_TRUE(manager.listen(QHostAddress::LocalHost));
    pass(manager.socketDescriptor());
    start("2");
    expectError("the service manager passes 2 sockets, the agent takes one");
}

TEST_F(PassedSocket, MustListen)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QTcpSocket connected;
    connected.connectToHost(QHostAddress::LocalHost, server.serverPort());
    ASSERT_TRUE(connected.waitForConnected(support::deadlineMs));
    pass(connected.socketDescriptor());
    start();
    expectError("passes a socket that does not listen for TCP on a loopback address");
}

TEST_F(PassedSocket, MustHaveALoopbackAddress)
{
    QTcpServer manager;
    ASSERT_TRUE(manager.listen(QHostAddress::AnyIPv4));
    pass(manager.socketDescriptor());
    start();
    expectError("passes a socket that does not listen for TCP on a loopback address");
}

TEST_F(PassedSocket, MustBeOfTcp)
{
    QUdpSocket datagrams;
    ASSERT_TRUE(support::bindToFreePort(datagrams));
    pass(datagrams.socketDescriptor());
    start();
    expectError("passes a socket that does not listen for TCP on a loopback address");
}
