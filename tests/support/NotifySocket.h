// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_NOTIFYSOCKET_H
#define VIGIL_SUPPORT_NOTIFYSOCKET_H

#include <QByteArray>
#include <QSocketNotifier>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace support {

/// A service manager: it receives the messages sent to NOTIFY_SOCKET. It reads them whenever the event loop
/// runs: the system keeps ten or so, and the sender of the next one hangs.
///
/// Threads: one with an event loop. Failure: without a socket nothing is received.
class NotifySocket
{
public:
    NotifySocket();
    ~NotifySocket();
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    QString path() const { return m_directory.filePath(QStringLiteral("notify")); }

    /// Everything received so far, one line for each message.
    const QByteArray& received();
    bool waitFor(const QByteArray& line, int times = 1);

private:
    const QTemporaryDir m_directory;
    int m_descriptor = -1;
    QByteArray m_received;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace support

#endif
