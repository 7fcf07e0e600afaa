// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/QuietSocket.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <algorithm>
#include <utility>

#include "platform/Platform.h"

namespace base {

namespace {
/// A socket notifier would collide with the one of Qt on the same socket.
constexpr int retryMs = 5;

constexpr int writeStepMs = 50;

/// A system call then carries some 400 frames; more do not make it cheaper.
constexpr int gatheredBytes = 64 * 1024;
constexpr int maxKeptBytes = 4 * gatheredBytes; // of an empty buffer
} // namespace

QuietSocket::QuietSocket(QObject* parent)
    : QTcpSocket(parent), m_sendsItself(platform::socketsRaiseSignals()), m_retryTimer(new QTimer(this))
{
    m_retryTimer->setInterval(retryMs);
    connect(m_retryTimer, &QTimer::timeout, this, &QuietSocket::sendPending);
}

qint64 QuietSocket::writeData(const char* data, qint64 size)
{
    if (!m_sendsItself)
        return QTcpSocket::writeData(data, size);
    if (state() != ConnectedState)
        return -1;
    if (m_pending.isEmpty())
        m_pending.reserve(gatheredBytes); // keeps its memory when it is emptied
    m_pending.append(data, static_cast<int>(size));
    if (!m_isGathering || bytesToWrite() >= gatheredBytes)
        sendPending();
    return size;
}

/// True if any bytes were sent.
bool QuietSocket::sendPending()
{
    const int waiting = m_pending.size() - m_sent;
    if (waiting == 0)
        return false;
    const qint64 sent = platform::sendQuietly(socketDescriptor(), m_pending.constData() + m_sent,
                                              static_cast<std::size_t>(waiting));
    if (sent < 0) {
        setSocketError(RemoteHostClosedError);
        abort();
        return false;
    }
    m_sent += static_cast<int>(sent);
    if (m_sent == m_pending.size()) {
        emptyBuffer();
    } else {
        if (m_sent > m_pending.size() / 2)
            m_pending.remove(0, std::exchange(m_sent, 0));
        if (!m_retryTimer->isActive())
            m_retryTimer->start();
    }
    if (sent > 0)
        emit bytesWritten(sent);
    if (m_pending.isEmpty() && state() == ClosingState)
        QTcpSocket::disconnectFromHost();
    return sent > 0;
}

bool QuietSocket::flush()
{
    return m_sendsItself ? sendPending() : QTcpSocket::flush();
}

qint64 QuietSocket::bytesToWrite() const
{
    return m_sendsItself ? m_pending.size() - m_sent : QTcpSocket::bytesToWrite();
}

/// A system may call a socket writable only once a large part of its buffer is free. A slow peer would look
/// as if it took nothing, so each step tries to write first.
bool QuietSocket::waitForBytesWritten(int timeoutMs)
{
    const QDeadlineTimer deadline(timeoutMs);
    while (!flush()) {
        if (bytesToWrite() == 0 || deadline.hasExpired())
            return false;
        const int leftMs = timeoutMs < 0 ? writeStepMs : static_cast<int>(deadline.remainingTime());
        if (waitAndWrite(std::min(leftMs, writeStepMs)))
            return true;
    }
    return true;
}

bool QuietSocket::waitAndWrite(int timeoutMs)
{
    if (!m_sendsItself)
        return QTcpSocket::waitForBytesWritten(timeoutMs);
    return platform::waitUntilWritable(socketDescriptor(), timeoutMs) && sendPending();
}

void QuietSocket::disconnectFromHost()
{
    if (!m_sendsItself || bytesToWrite() == 0)
        return QTcpSocket::disconnectFromHost();
    setSocketState(ClosingState);
    sendPending(); // gathered bytes have no timer yet
}

void QuietSocket::close()
{
    emptyBuffer();
    QTcpSocket::close();
}

void QuietSocket::emptyBuffer()
{
    if (m_pending.capacity() > maxKeptBytes)
        m_pending.clear();
    else
        m_pending.resize(0);
    m_sent = 0;
    m_retryTimer->stop();
}

} // namespace base
