// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent as a console program.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <windows.h>

#include "agent/core/FileRights.h"
#include "support/FreePort.h"
#include "support/QtPrinters.h"
#include "support/RunUntil.h"

namespace {

const QByteArray listening = "listening for applications on 127.0.0.1:";

/// A standalone agent with a configuration file. All of its files are in one folder.
class ConsoleLife : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_FALSE(agent::fileRights::makeFile(path(), "rocommunity public 127.0.0.1\n",
                                                 agent::fileRights::ServiceMay::Read));
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* variable : {"TEMP", "TMP"})
            environment.insert(QLatin1String(variable), folder.path());
        process.setProcessEnvironment(environment);
        ASSERT_TRUE(start()) << log().constData();
    }

    void TearDown() override
    {
        process.kill();
        process.waitForFinished();
    }

    /// The file keeps its rights.
    void write(const QByteArray& configuration)
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(configuration);
    }

    /// Raises the event as the system does, in a new thread of the agent. GenerateConsoleCtrlEvent() raises
    /// only two events, and under Wine its Ctrl-Break ends a process without a call of its handler.
    void raise(DWORD event)
    {
        const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernelbase"), "CtrlRoutine")));
        ASSERT_TRUE(routine);
        HANDLE agent = OpenProcess(PROCESS_ALL_ACCESS, FALSE, static_cast<DWORD>(process.processId()));
        HANDLE thread = CreateRemoteThread(agent, nullptr, 0, routine,
                                           reinterpret_cast<void*>(DWORD_PTR(event)), 0, nullptr);
        EXPECT_TRUE(thread);
        CloseHandle(thread);
        CloseHandle(agent);
    }

    void expectCleanEndAfter(DWORD event)
    {
        QTcpSocket application;
        application.connectToHost(QHostAddress(QHostAddress::LocalHost), applicationPort());
        ASSERT_TRUE(application.waitForConnected(support::deadlineMs));
        raise(event);
        ASSERT_TRUE(support::runUntil([this] { return process.state() == QProcess::NotRunning; }))
            << log().constData();
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
        EXPECT_TRUE(log().endsWith("vigil-agent: ending\n")) << log().constData();
        EXPECT_TRUE(
            support::runUntil([&] { return application.state() == QAbstractSocket::UnconnectedState; }));
        EXPECT_EQ(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                  QStringList{configurationName});
        EXPECT_TRUE(QTcpServer().listen(QHostAddress::LocalHost, applicationPort()));
    }

    const QByteArray& log()
    {
        m_log += process.readAllStandardError();
        return m_log;
    }

    bool waitForLog(const QByteArray& text, int times = 1)
    {
        return support::runUntil([&] { return log().count(text) >= times; });
    }

    QString path() const { return folder.filePath(configurationName); }

    const QTemporaryDir folder;
    const QString configurationName = QStringLiteral("agent.conf");
    QProcess process;

private:
    /// Other tests may take the free port first.
    bool start()
    {
        for (int attempt = 0; attempt < 10; ++attempt) {
            m_log.clear();
            process.start(QStringLiteral(VIGIL_AGENT_PROGRAM),
                          {QStringLiteral("--standalone"), freeAddress(), QStringLiteral("--listen"),
                           QStringLiteral("127.0.0.1:0"), QStringLiteral("--config"), path()});
            support::runUntil([this] { return applicationPort() != 0 || hasEnded(); });
            if (!hasEnded() || !log().contains("cannot serve on"))
                return !hasEnded();
        }
        return false;
    }

    bool hasEnded() const { return process.state() == QProcess::NotRunning; }

    static QString freeAddress()
    {
        QUdpSocket socket;
        support::bindToFreePort(socket);
        return QStringLiteral("udp:127.0.0.1:%1").arg(socket.localPort());
    }

    /// 0 until the agent listens.
    quint16 applicationPort()
    {
        const int line = log().indexOf(listening);
        const int end = log().indexOf('\n', line);
        const int start = line + listening.size();
        return line < 0 || end < 0 ? quint16(0) : log().mid(start, end - start).toUShort();
    }

    QByteArray m_log;
};

} // namespace

TEST_F(ConsoleLife, CtrlCEndsItCleanly)
{
    expectCleanEndAfter(CTRL_C_EVENT);
}

TEST_F(ConsoleLife, ClosingTheWindowEndsItCleanly)
{
    expectCleanEndAfter(CTRL_CLOSE_EVENT);
}

TEST_F(ConsoleLife, LoggingOffEndsItCleanly)
{
    expectCleanEndAfter(CTRL_LOGOFF_EVENT);
}

TEST_F(ConsoleLife, ShuttingDownEndsItCleanly)
{
    expectCleanEndAfter(CTRL_SHUTDOWN_EVENT);
}

TEST_F(ConsoleLife, CtrlBreakReadsTheConfigurationAgain)
{
    raise(CTRL_BREAK_EVENT);
    ASSERT_TRUE(waitForLog("agent.conf has been read again")) << log().constData();
    write("noSuchDirective public\n");
    raise(CTRL_BREAK_EVENT);
    ASSERT_TRUE(waitForLog("noSuchDirective")) << log().constData();
    write("rocommunity other 127.0.0.1\n");
    raise(CTRL_BREAK_EVENT);
    EXPECT_TRUE(waitForLog("agent.conf has been read again", 2)) << log().constData();
    EXPECT_EQ(process.state(), QProcess::Running);
}
