// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SNMPDPROCESS_H
#define VIGIL_SUPPORT_SNMPDPROCESS_H

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace support {

/// Runs a real snmpd on a free port while the object lives. Its AgentX socket, configuration and folders are
/// private. It can be restarted at the same addresses.
///
/// Threads: one with an event loop. Failure: start() returns false; log() says why.
class SnmpdProcess
{
public:
    /// The addresses are added to the directives; further arguments keep snmpd from reading other files.
    explicit SnmpdProcess(const QByteArray& directives = openToThisHost(), const QStringList& arguments = {});
    ~SnmpdProcess();

    /// The community "public" may read, "private" may write.
    static QByteArray openToThisHost();

    /// Returns once snmpd is ready to serve.
    bool start();

    /// Shuts it down cleanly. Returns false if it does not end.
    bool stop();
    bool kill();

    /// Suspend and resume the process, as a debugger would.
    void suspend();
    void resume();

    qint64 processId() const { return m_process.processId(); }

    QString agentxAddress() const { return m_directory.filePath(QStringLiteral("master")); }
    QString udpAddress() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_port); }

    /// All output since the last start.
    const QByteArray& log();
    bool waitForLog(const QByteArray& text, int times = 1);

private:
    bool startOnce();
    bool waitForEnd();

    const QByteArray m_directives;
    const QStringList m_arguments;
    const QTemporaryDir m_directory;
    QProcess m_process;
    QByteArray m_log;
    quint16 m_port = 0;
};

} // namespace support

#endif
