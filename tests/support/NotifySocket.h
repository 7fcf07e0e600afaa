// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_NOTIFYSOCKET_H
#define VIGIL_SUPPORT_NOTIFYSOCKET_H

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace support {

/// A service manager: it receives the messages sent to NOTIFY_SOCKET.
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
};

} // namespace support

#endif
