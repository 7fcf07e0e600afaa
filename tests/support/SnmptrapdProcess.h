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

/// A real snmptrapd on a free port of this host, for as long as the object lives.
///
/// Purpose: end-to-end tests start one, name its address() in the agent's configuration and read what it
/// prints.
///
/// Threads: one with an event loop. Failure: start() returns false; log() holds what snmptrapd said.
class SnmptrapdProcess
{
public:
    /// Directives in addition to those that let every community in.
    explicit SnmptrapdProcess(const QByteArray& directives = QByteArray());
    ~SnmptrapdProcess();

    /// Comes back when notifications can be sent to it.
    bool start();

    QString address() const { return QStringLiteral("udp:127.0.0.1:%1").arg(m_port); }

    /// One text for each notification, in the order of their arrival: its objects behind sysUpTime.0,
    /// separated by "; ", with names but without modules.
    QStringList notifications();

    /// Waits until there are that many. Returns them all, whether or not they are as many.
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
