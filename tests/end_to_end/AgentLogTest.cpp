// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The lines on standard error and their reader.

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/AgentProcess.h"
#include "support/Deadline.h"
#include "support/EnterpriseId.h"
#include "support/EnvironmentVariable.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::FakeApplication;
using support::full;
using support::runUntil;
using support::SnmpTool;

namespace {

/// A pipe with a name and room for a few lines. Nothing reads it unless told to.
class SmallPipe
{
public:
    SmallPipe()
    {
        const QByteArray path = QFile::encodeName(name());
        mkfifo(path.constData(), 0600);
        m_descriptor = open(path.constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        fcntl(m_descriptor, F_SETPIPE_SZ, 16'384);
    }
    ~SmallPipe() { close(m_descriptor); }
    SmallPipe(const SmallPipe&) = delete;
    SmallPipe& operator=(const SmallPipe&) = delete;

    QString name() const { return m_directory.filePath(QStringLiteral("pipe")); }

    /// Everything in it.
    QByteArray take()
    {
        QByteArray all;
        char bytes[4096];
        ssize_t size = 0;
        while ((size = read(m_descriptor, bytes, sizeof bytes)) > 0)
            all.append(bytes, static_cast<int>(size));
        return all;
    }

private:
    const QTemporaryDir m_directory;
    int m_descriptor = -1;
};

} // namespace

TEST(AgentLog, AStalledReaderDoesNotStopTheAgent)
{
    SmallPipe pipe;
    const quint16 port = AgentProcess::freePort();
    const quint16 snmpPort = AgentProcess::freePort();
    const QString snmpAddress = QStringLiteral("udp:127.0.0.1:%1").arg(snmpPort);
    QProcess agent;
    agent.setStandardErrorFile(pipe.name());
    agent.start(AgentProcess::program(),
                {QStringLiteral("--verbose"), QStringLiteral("--standalone"), snmpAddress,
                 QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port)});
    QByteArray log;
    ASSERT_TRUE(runUntil([&] { return (log += pipe.take()).contains("listening for applications"); }))
        << log.constData();

    FakeApplication application(port);
    for (int i = 0; i < 90; ++i) // lines with about 90 kB
        application.publish("5.1", std::string(900, 'x') + std::to_string(i));
    application.publish("5.2", 7);
    const SnmpTool tool(snmpAddress);
    EXPECT_TRUE(tool.waitFor(full("5.2"), QStringLiteral("7")));

    log.clear();
    EXPECT_TRUE(runUntil([&] {
        application.publish("5.2", 8);
        log += pipe.take();
        return log.contains(" lines are missing here: standard error was not read\n");
    }));
    for (int i = 0; i < 90; ++i)
        application.publish("5.1", std::string(900, 'y') + std::to_string(i));
    application.publish("5.2", 9);
    EXPECT_TRUE(tool.waitFor(full("5.2"), QStringLiteral("9")));
    AgentProcess::askToEnd(agent);
    EXPECT_TRUE(agent.waitForFinished(support::deadlineMs));
    EXPECT_EQ(agent.exitCode(), 0);
}

// The first line of the log went into the pipe of the signals, and the agent took it for SIGTERM.
TEST(AgentLog, NoStandardStreamIsNeeded)
{
    const quint16 port = AgentProcess::freePort();
    const QString snmpAddress = QStringLiteral("udp:127.0.0.1:%1").arg(AgentProcess::freePort());
    QProcess agent;
    agent.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), QStringLiteral("exec \"$0\" \"$@\" <&- >&- 2>&-"),
                 AgentProcess::program(), QStringLiteral("--verbose"), QStringLiteral("--standalone"),
                 snmpAddress, QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port)});
    const SnmpTool tool(snmpAddress);
    const QString cells = full("127.3.1.200.5.1.3.0");
    ASSERT_TRUE(tool.waitFor(cells, QStringLiteral("0")));
    FakeApplication application(port);
    application.publish("5.1", 7);
    EXPECT_TRUE(tool.waitFor(full("5.1"), QStringLiteral("7")));
    EXPECT_EQ(agent.state(), QProcess::Running);
    AgentProcess::askToEnd(agent);
    EXPECT_TRUE(agent.waitForFinished(support::deadlineMs));
    EXPECT_EQ(agent.exitCode(), 0);
}

TEST(AgentLog, OneUserCausesAHundredLinesASecond)
{
    AgentProcess agent;
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    const SnmpTool tool(agent.udpAddress());
    QElapsedTimer timer;
    timer.start();
    FakeApplication application(agent.applicationPort());
    constexpr int values = 20'000;
    for (int i = 1; i <= values; ++i)
        application.publish("5.1", i);
    EXPECT_TRUE(tool.waitFor(full("5.1"), QString::number(values)));
    EXPECT_TRUE(agent.waitForLog(" are left out of this second"));
    EXPECT_LE(agent.log().count('\n'), 110 * (2 + timer.elapsed() / 1000));
}

TEST(AgentLog, HasPrioritiesInTheJournalAlone)
{
    EXPECT_TRUE(AgentProcess::run({QStringLiteral("--wrong")}).err.startsWith("vigil-agent: error: "));
    QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("journal")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    struct stat info = {};
    ASSERT_EQ(fstat(file.handle(), &info), 0);
    const support::EnvironmentVariable stream("JOURNAL_STREAM", QByteArray::number(quint64(info.st_dev)) +
                                                                    ':' +
                                                                    QByteArray::number(quint64(info.st_ino)));
    QProcess agent;
    agent.setStandardErrorFile(file.fileName(), QIODevice::Append);
    agent.start(AgentProcess::program(), {QStringLiteral("--wrong")});
    ASSERT_TRUE(agent.waitForFinished(support::deadlineMs));
    EXPECT_TRUE(file.readAll().startsWith("<3>vigil-agent: error: "));
}
