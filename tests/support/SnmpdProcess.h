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

/// A real snmpd on a free port, with an AgentX socket, a configuration and folders of its own, for as long as
/// the object lives. It can be ended and started again at the same addresses.
///
/// Threads: one with an event loop. Failure: start() returns false; log() holds what snmpd said.
class SnmpdProcess
{
public:
    /// Directives in addition to its addresses, and arguments in addition to those that make it read nothing
    /// else.
    explicit SnmpdProcess(const QByteArray& directives = openToThisHost(), const QStringList& arguments = {});
    ~SnmpdProcess();

    /// The community "public" may read, "private" may write.
    static QByteArray openToThisHost();

    /// Comes back when snmpd is ready to serve.
    bool start();

    /// Ends it in order. False when it does not end.
    bool stop();
    bool kill();

    /// Stops and continues the process, as a debugger would.
    void suspend();
    void resume();

    QString agentxAddress() const { return m_directory.filePath(QStringLiteral("master")); }
    QString udpAddress() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_port); }

    /// What snmpd has written since its last start.
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
