// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/control/ControlServer.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "agent/core/Descriptors.h"

namespace agent {

namespace {

constexpr int probeMs = 200;
constexpr int lockMs = 2000;     // for another agent that starts or ends
constexpr int longestPath = 100; // sockets take 103 at least; the server adds a few while it makes one

bool mayControl(const User& user)
{
    return user && (user == platform::rootUser() || user == platform::ownUser());
}

/// Another user who may change the directory could exchange files while the socket is made, and so make root
/// change the rights of any file.
Error problemWithDirectory(const QFileInfo& directory)
{
    const QString owner = QString::number(directory.ownerId());
    const bool isTrusted = mayControl(User(owner.toStdString()));
    if (isTrusted && !(directory.permissions() & (QFile::WriteGroup | QFile::WriteOther)))
        return {};
    return Error(QStringLiteral("users other than root and the agent's own may write in its directory"));
}

/// Nothing if the path is free, or has a socket that no program listens on any more. The system refuses a
/// connection only then: not if an agent is too busy to accept, nor if it is another program's kind of
/// socket.
Error problemWith(const QString& path)
{
    std::error_code ignored; // the type says so, too
    const std::filesystem::file_type type =
        std::filesystem::symlink_status(path.toStdString(), ignored).type();
    if (type == std::filesystem::file_type::not_found)
        return {};
    if (type != std::filesystem::file_type::socket)
        return Error(QStringLiteral("it exists and is not a socket"));
    QLocalSocket probe;
    probe.connectToServer(path);
    const bool isLeft =
        !probe.waitForConnected(probeMs) && probe.error() == QLocalSocket::ConnectionRefusedError;
    return isLeft ? Error() : Error(QStringLiteral("another agent listens there"));
}

QString lockPath(const QString& path)
{
    return path + QStringLiteral(".lock");
}

Error problemWith(const QLockFile& lock)
{
    if (lock.error() == QLockFile::LockFailedError)
        return Error(QStringLiteral("another agent is starting or ending there"));
    return Error(QStringLiteral("no file can be made in its directory"));
}

ControlReply busyReply()
{
    const QByteArray count = QByteArray::number(static_cast<int>(ControlServer::maxConnections));
    return {"{\"error\":\"the agent is busy with " + count + " other requests; try again\"}\n", nullptr};
}

void discard(QLocalSocket* socket)
{
    socket->abort();
    socket->deleteLater();
}

} // namespace

ControlServer::ControlServer(Clock& clock, ControlHandler handler, UserOf userOf)
    : m_clock(clock),
      m_handler(std::move(handler)),
      m_refusal([](const QByteArray&, const User&) { return busyReply(); }),
      m_userOf(std::move(userOf))
{
    m_runs.setSingleShot(true);
    connect(&m_runs, &QTimer::timeout, this, &ControlServer::run);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &ControlServer::acceptAll);
}

ControlServer::~ControlServer()
{
    if (!m_server.isListening())
        return;
    // The socket closes before its file goes. In between, another agent could put its own there.
    QLockFile lock(lockPath(path()));
    lock.tryLock(lockMs);
    m_server.close();
}

Error ControlServer::listen(const QString& path)
{
    if (QFile::encodeName(path).size() > longestPath)
        return Error(QStringLiteral("it is longer than %1 bytes").arg(longestPath));
    const QFileInfo directory(QFileInfo(path).absolutePath());
    if (!directory.isDir())
        return Error(QStringLiteral("its directory does not exist"));
    if (Error error = problemWithDirectory(directory))
        return error;
    QLockFile lock(lockPath(path));
    if (!lock.tryLock(lockMs))
        return problemWith(lock);
    if (Error error = problemWith(path))
        return error;
    QLocalServer::removeServer(path);
    return m_server.listen(path) ? Error() : Error(m_server.errorString());
}

void ControlServer::acceptAll()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        const auto descriptor = socket->socketDescriptor();
        const User user = m_userOf(static_cast<std::intptr_t>(descriptor));
        const bool isUnheard = !mayControl(user) || m_refused >= maxRefused ||
                               descriptors::isReserved(static_cast<int>(descriptor));
        if (isUnheard)
            discard(socket);
        else if (m_connections.size() < maxConnections)
            accept(socket, user);
        else
            refuse(socket, user);
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

/// Closed before its request, the peer could miss the reason.
void ControlServer::refuse(QLocalSocket* socket, const User& user)
{
    ++m_refused;
    auto* connection = new ControlConnection(socket, user, m_clock, m_refusal, this);
    connect(connection, &ControlConnection::closed, this, [this] { --m_refused; });
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
