// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_AGENTPROCESS_H
#define VIGIL_SUPPORT_AGENTPROCESS_H

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace support {

/// A real vigil-agent on free ports of its own, for as long as the object lives.
///
/// Purpose: end-to-end tests start one, connect applications to applicationPort() and send managers' requests
/// to udpAddress() or tcpAddress(), or to the snmpd that it has joined. Started again, it has the same
/// applicationPort().
///
/// Threads: one with an event loop. Failure: start() returns false; log() holds what the agent said.
class AgentProcess
{
public:
    /// Arguments in addition to the addresses.
    explicit AgentProcess(const QStringList& arguments = {QStringLiteral("--verbose")});

    /// One that joins the snmpd with this AgentX address. It is ready when applications may come, whether or
    /// not snmpd runs.
    AgentProcess(const QString& agentxAddress, const QStringList& arguments);
    ~AgentProcess();

    /// Comes back when the agent is ready to serve.
    bool start();

    QString udpAddress() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_snmpPort); }
    QString tcpAddress() const { return QStringLiteral("tcp:127.0.0.1:%1").arg(m_snmpPort); }
    quint16 snmpPort() const { return m_snmpPort; }
    quint16 applicationPort() const { return m_applicationPort; }

    /// What the agent has written to standard error so far.
    const QByteArray& log();
    bool waitForLog(const QByteArray& text, int times = 1);

    /// Ends the agent in order. Returns its exit code, -1 when it crashed or did not end.
    int stop();

    /// Ends it as a crash would. False when it does not end.
    bool kill();

    /// Sends SIGHUP.
    void reload();

    /// Stops and continues the process, as a debugger would.
    void suspend();
    void resume();

    qint64 processId() const { return m_process.processId(); }

    /// Runs the agent with exactly these arguments to its end. For those that it refuses.
    struct Outcome
    {
        int exitCode;
        QByteArray out;
        QByteArray err;
    };
    static Outcome run(const QStringList& arguments);

    /// A port that was free on UDP and TCP a moment ago.
    static quint16 freePort();

private:
    bool startOnce();
    QStringList roleArguments();

    const QStringList m_arguments;
    const QString m_agentxAddress;
    QProcess m_process;
    QByteArray m_log;
    quint16 m_snmpPort = 0;
    quint16 m_applicationPort = 0;
};

} // namespace support

#endif
