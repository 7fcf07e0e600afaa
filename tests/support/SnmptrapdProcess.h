// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SNMPTRAPDPROCESS_H
#define VIGIL_SUPPORT_SNMPTRAPDPROCESS_H

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include "QtPrinters.h"

namespace support {

/// Runs a real snmptrapd on a free port while the object lives.
///
/// Purpose: end-to-end tests start one, name its address() in the agent's configuration and read the
/// notifications it received.
///
/// Threads: one with an event loop. Failure: start() returns false; log() says why.
class SnmptrapdProcess
{
public:
    /// Every community is accepted; the directives are added.
    explicit SnmptrapdProcess(const QByteArray& directives = QByteArray());
    ~SnmptrapdProcess();

    /// Returns once it can receive notifications.
    bool start();

    QString address() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_port); }

    /// One text for each notification, oldest first: the objects after sysUpTime.0, separated by "; ", with
    /// names but without modules.
    QStringList notifications();

    /// Waits until there are count notifications. Returns all of them, after a time-out fewer.
    QStringList waitForNotifications(int count);

    const QByteArray& log();

private:
    bool startOnce();

    QByteArray m_directives;
    QTemporaryDir m_directory;
    QProcess m_process;
    QByteArray m_log;
    quint16 m_port = 0;
};

} // namespace support

#endif
