// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_HTTPCLIENT_H
#define VIGIL_SUPPORT_HTTPCLIENT_H

#include <QByteArray>
#include <QHostAddress>
#include <QTcpSocket>

#include "support/RunUntil.h"

namespace support {

/// A peer of an HTTP server, byte by byte: it can send what no browser would. The server may be in the same
/// thread.
class HttpClient
{
public:
    explicit HttpClient(quint16 port)
    {
        bool wasConnected = false; // the server may close at once
        const auto connection =
            QObject::connect(&m_socket, &QTcpSocket::connected, [&] { wasConnected = true; });
        m_socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        runUntil([&] { return wasConnected; });
        QObject::disconnect(connection);
    }

    void send(const QByteArray& bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }

    /// Sends no more.
    void close() { m_socket.disconnectFromHost(); }

    /// Leaves everything in the kernel's buffers.
    void stopReading() { m_socket.setReadBufferSize(1); }
    void resumeReading() { m_socket.setReadBufferSize(0); }

    const QByteArray& received()
    {
        m_received += m_socket.readAll();
        return m_received;
    }

    bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }

    /// Waits until the connection has ended.
    bool waitForEnd()
    {
        return runUntil([this] {
            received();
            return m_socket.state() == QAbstractSocket::UnconnectedState;
        });
    }

    /// Sends a request and returns the whole reply.
    QByteArray request(const QByteArray& bytes)
    {
        send(bytes);
        runUntil([this] { return isComplete() || m_socket.state() == QAbstractSocket::UnconnectedState; });
        return received();
    }

private:
    bool isComplete()
    {
        const int header = received().indexOf("\r\n\r\n");
        if (header < 0)
            return false;
        if (m_received.left(header).contains("Transfer-Encoding: chunked"))
            return m_received.endsWith("\r\n0\r\n\r\n");
        const int start = m_received.indexOf("Content-Length: ") + 16;
        const int size = m_received.mid(start, m_received.indexOf('\r', start) - start).toInt();
        return start >= 16 && m_received.size() >= header + 4 + size;
    }

    QTcpSocket m_socket;
    QByteArray m_received;
};

} // namespace support

#endif
