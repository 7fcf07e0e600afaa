// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/control/ControlConnection.h"

#include <utility>

namespace agent {

ControlConnection::ControlConnection(QLocalSocket* socket, const User& user, Clock& clock,
                                     const ControlHandler& handler, QObject* parent)
    : QObject(parent), m_socket(socket), m_user(user), m_handler(handler), m_deadline(clock, [this] {
          close();
      })
{
    m_socket->setParent(this);
    m_socket->setReadBufferSize(maxRequest + 1);
    connect(m_socket, &QLocalSocket::readyRead, this, &ControlConnection::read);
    connect(m_socket, &QLocalSocket::bytesWritten, this, &ControlConnection::handleTaken);
    connect(m_socket, &QLocalSocket::disconnected, this, &ControlConnection::close);
}

void ControlConnection::start()
{
    m_deadline.startOnce(requestMs);
    read(); // it may be there already
}

void ControlConnection::read()
{
    if (m_state != State::Reading)
        return;
    m_request += m_socket->readAll();
    const int end = m_request.indexOf('\n');
    if (end >= 0)
        reply(m_handler(m_request.left(end), m_user));
    else if (m_request.size() > maxRequest)
        reply({"{\"error\":\"the request is too long\"}\n", nullptr});
}

void ControlConnection::reply(ControlReply reply)
{
    m_state = State::Replying;
    m_deadline.startOnce(requestMs);
    m_socket->write(reply.text);
    m_pieces = std::move(reply.pieces);
    if (m_pieces)
        emit ready();
    else
        m_socket->disconnectFromServer(); // once all is written
}

/// A long reply may take its time while the peer reads: applications decide how long it is.
void ControlConnection::handleTaken()
{
    if (m_state != State::Replying)
        return;
    m_deadline.startOnce(requestMs);
    emit ready();
}

bool ControlConnection::canWrite() const
{
    return m_pieces && m_socket->bytesToWrite() < maxPending;
}

int ControlConnection::writePiece()
{
    QByteArray piece;
    const bool isLast = !m_pieces->appendTo(piece);
    m_socket->write(piece);
    if (isLast) {
        m_pieces.reset();
        m_socket->disconnectFromServer();
    }
    return piece.size();
}

void ControlConnection::close()
{
    if (std::exchange(m_state, State::Closed) == State::Closed)
        return;
    m_pieces.reset();
    m_socket->abort();
    emit closed();
    deleteLater();
}

} // namespace agent
