// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_AGENTPROCESS_H
#define VIGIL_SUPPORT_AGENTPROCESS_H

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace support {

/// Runs a real vigil-agent on free ports while the object lives.
///
/// Purpose: end-to-end tests start one, connect applications to applicationPort() and send requests of
/// managers to udpAddress() or tcpAddress(), or to the snmpd it has joined. applicationPort() stays the same
/// after a restart. The agent's files are in a temporary folder, so a killed agent leaves nothing on the
/// machine.
///
/// Threads: one with an event loop. Failure: start() returns false; log() says why.
class AgentProcess
{
public:
    /// A standalone agent. The addresses are added to the arguments.
    explicit AgentProcess(const QStringList& arguments = {QStringLiteral("--verbose")});

    /// A subagent of the snmpd at this AgentX address. It is ready once it accepts applications; snmpd need
    /// not run.
    AgentProcess(const QString& agentxAddress, const QStringList& arguments);
    ~AgentProcess();

    /// Returns once the agent is ready to serve.
    bool start();

    QString udpAddress() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_snmpPort); }
    QString tcpAddress() const { return QStringLiteral("tcp:127.0.0.1:%1").arg(m_snmpPort); }
    quint16 snmpPort() const { return m_snmpPort; }
    quint16 applicationPort() const { return m_applicationPort; }

    /// Everything written to standard error so far.
    const QByteArray& log();
    bool waitForLog(const QByteArray& text, int times = 1);

    /// Shuts the agent down cleanly. Returns its exit code, or -1 if it crashed or did not end.
    int stop();

    /// Ends it as a crash would. Returns false if it does not end.
    bool kill();

    /// Sends SIGHUP.
    void reload();

    /// Suspend and resume the process, as a debugger would.
    void suspend();
    void resume();

    qint64 processId() const { return m_process.processId(); }

    /// The agent's files on disk at this time: temporary, persistent or in its home folder.
    QStringList filesLeft() const;

    struct Outcome
    {
        int exitCode = -1; ///< -1 if it crashed or did not end
        QByteArray out;
        QByteArray err;
        QStringList filesLeft;
    };

    /// Runs the agent with exactly these arguments until it ends. Use it for arguments the agent refuses.
    static Outcome run(const QStringList& arguments);

    /// The path of the program, for tests that run it in another way.
    static QString program();

    /// Asks a running agent to shut down cleanly.
    static void askToEnd(QProcess& agent);

    /// True if the program is the one for Windows, under Wine: the environment variable VIGIL_TEST_AGENT
    /// names a script that runs it.
    static bool isForWindows();

    /// A port that was just free on UDP and TCP. Tests of other processes get other ports, and the system
    /// gives it to no socket by itself.
    static quint16 freePort();

private:
    bool startOnce();
    QStringList roleArguments();

    const QStringList m_arguments;
    const QString m_agentxAddress;
    const QTemporaryDir m_directory;
    const QTemporaryDir m_logDirectory;
    QFile m_logFile; // on Windows: only a file has each line before the agent goes on
    QProcess m_process;
    QByteArray m_log;
    quint16 m_snmpPort = 0;
    quint16 m_applicationPort = 0;
};

} // namespace support

#endif
