// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_QUIETSOCKET_H
#define VIGIL_BASE_QUIETSOCKET_H

#include <QByteArray>
#include <QTcpSocket>

class QTimer;

namespace base {

/// A QTcpSocket whose writes never touch the process's signals.
///
/// Qt ignores SIGPIPE in the whole process at its first write to a socket. The disposition belongs to the
/// host, so this socket sends by itself, without the signal. Where sockets raise no signals it is a plain
/// QTcpSocket.
class QuietSocket : public QTcpSocket
{
    Q_OBJECT

public:
    explicit QuietSocket(QObject* parent = nullptr);

    /// While gathering, writes wait for flush(), or until there are about 64 kB.
    void setGathering(bool isGathering) { m_isGathering = isGathering; }

    /// As in QTcpSocket, which is not virtual here: call it on a QuietSocket.
    bool flush();

    qint64 bytesToWrite() const override;
    bool waitForBytesWritten(int timeoutMs) override;

    /// Closes once all bytes are sent.
    void disconnectFromHost() override;

    /// Closes at once; abort() comes here, too.
    void close() override;

protected:
    qint64 writeData(const char* data, qint64 size) override;

private:
    bool sendPending();
    bool waitAndWrite(int timeoutMs);
    void emptyBuffer();

    const bool m_sendsItself;
    bool m_isGathering = false;
    QByteArray m_pending;
    int m_sent = 0; // bytes of m_pending
    QTimer* m_retryTimer;
};

} // namespace base

#endif
