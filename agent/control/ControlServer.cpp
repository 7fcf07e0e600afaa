// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/control/ControlServer.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

#include "agent/core/Descriptors.h"

namespace agent {

namespace {

constexpr int probeMs = 200;

bool mayControl(const User& user)
{
    return user && (user == platform::rootUser() || user == platform::ownUser());
}

bool isServed(const QString& path)
{
    QLocalSocket probe;
    probe.connectToServer(path);
    return probe.waitForConnected(probeMs);
}

void discard(QLocalSocket* socket)
{
    socket->abort();
    socket->deleteLater();
}

} // namespace

ControlServer::ControlServer(Clock& clock, ControlHandler handler, UserOf userOf)
    : m_clock(clock), m_handler(std::move(handler)), m_userOf(std::move(userOf))
{
    m_runs.setSingleShot(true);
    connect(&m_runs, &QTimer::timeout, this, &ControlServer::run);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &ControlServer::acceptAll);
}

Error ControlServer::listen(const QString& path)
{
    const QFileInfo file(path);
    if (file.isFile() || file.isDir() || file.isSymLink())
        return Error(QStringLiteral("it exists and is not a socket"));
    if (isServed(path))
        return Error(QStringLiteral("another agent listens there"));
    QLocalServer::removeServer(path);
    return m_server.listen(path) ? Error() : Error(m_server.errorString());
}

void ControlServer::acceptAll()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        const auto descriptor = socket->socketDescriptor();
        const User user = m_userOf(static_cast<std::intptr_t>(descriptor));
        if (!mayControl(user) || m_connections.size() >= maxConnections ||
            descriptors::isReserved(static_cast<int>(descriptor)))
            discard(socket);
        else
            accept(socket, user);
    }
}

void ControlServer::accept(QLocalSocket* socket, const User& user)
{
    auto* connection = new ControlConnection(socket, user, m_clock, m_handler, this);
    m_connections.push_back(connection);
    connect(connection, &ControlConnection::ready, this, [this] { m_runs.start(0); });
    connect(connection, &ControlConnection::closed, this, [this, connection] {
        m_connections.erase(std::find(m_connections.begin(), m_connections.end(), connection));
    });
    connection->start();
}

/// One turn: the readers take it in turns, and go on in the next one.
void ControlServer::run()
{
    m_turn.start();
    size_t full = 0; // readers in a row without room
    while (full < m_connections.size() && !m_turn.isOver()) {
        ControlConnection* connection = m_connections.front();
        m_connections.pop_front();
        m_connections.push_back(connection);
        if (!connection->canWrite()) {
            ++full;
            continue;
        }
        full = 0;
        m_turn.count(connection->writePiece());
    }
    if (full < m_connections.size())
        m_runs.start(0);
}

} // namespace agent
