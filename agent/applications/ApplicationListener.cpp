// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationListener.h"

#include <algorithm>
#include <utility>

#include "agent/applications/ApplicationConnection.h"
#include "agent/core/Descriptors.h"
#include "agent/core/HostAndPort.h"
#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 acceptAgainMs = 1000;
constexpr qint64 descriptorWarningPauseMs = 60'000;

void discard(QTcpSocket* socket)
{
    socket->abort();
    socket->deleteLater();
}

} // namespace

ApplicationListener::ApplicationListener(const ApplicationList& applications, Clock& clock,
                                         const Limits& limits, Identify identify)
    : m_applications(applications), m_clock(clock), m_limits(limits), m_identify(std::move(identify))
{
    connect(&m_server, &QTcpServer::newConnection, this, &ApplicationListener::acceptAll);
    connect(&m_server, &QTcpServer::acceptError, this, [this] { acceptLater(m_server.errorString()); });
}

Error ApplicationListener::listen(const QHostAddress& host, quint16 port)
{
    return m_server.listen(host, port) ? Error() : Error(m_server.errorString());
}

Error ApplicationListener::listen(int descriptor)
{
    return m_server.setSocketDescriptor(descriptor) ? Error() : Error(m_server.errorString());
}

QString ApplicationListener::address() const
{
    return hostAndPort(m_server.serverAddress(), m_server.serverPort());
}

void ApplicationListener::acceptAll()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        if (descriptors::isReserved(static_cast<int>(socket->socketDescriptor()))) {
            discard(socket);
            acceptLater(QStringLiteral("the agent needs the last descriptors itself"));
            continue;
        }
        const Identity identity = m_identify(socket->socketDescriptor());
        if (!isAllowed(identity))
            discard(socket);
        else if ((!isFull() && !isShareUsed(identity.user)) || makeRoomFor(identity.user))
            emit accepted(socket, identity);
        else
            turnAway(socket, identity);
    }
}

bool ApplicationListener::isFull() const
{
    return m_applications.connections().size() >= static_cast<size_t>(m_limits.connections);
}

/// The most for one user. The rest is for others.
size_t ApplicationListener::mostFor(const User& user) const
{
    const auto all = static_cast<size_t>(m_limits.connections);
    return user == platform::rootUser() ? all : all - all / 8;
}

bool ApplicationListener::isShareUsed(const User& user) const
{
    return m_applications.connectionsOf(user) >= mostFor(user);
}

/// The oldest silent connection makes room: an application sends its values as soon as it is connected. A
/// user without a place left gives up one of its own.
bool ApplicationListener::makeRoomFor(const User& user)
{
    const bool isOwnOnly = isShareUsed(user);
    const ApplicationList::Connections& all = m_applications.connections();
    const auto oldest = std::find_if(all.begin(), all.end(), [&](const auto& entry) {
        const ApplicationConnection& connection = *entry.second;
        return connection.isSilent() && (!isOwnOnly || connection.info().identity.user == user);
    });
    if (oldest == all.end())
        return false;
    oldest->second->closeSilent();
    return true;
}

bool ApplicationListener::isAllowed(const Identity& identity)
{
    if (m_limits.users.empty() || (identity.user && m_limits.users.count(*identity.user) > 0))
        return true;
    ++m_refused;
    if (m_refusedUsers.insert(identity.user).second)
        log::warning(QStringLiteral("an application (%1) is turned away: --allow-users does not name its "
                                    "user. Further ones of this user are not logged")
                         .arg(identityText(identity)));
    return false;
}

/// Qt itself stops accepting after an error.
void ApplicationListener::acceptLater(const QString& reason)
{
    if (m_clock.elapsedMs() >= m_nextDescriptorWarningMs) {
        m_nextDescriptorWarningMs = m_clock.elapsedMs() + descriptorWarningPauseMs;
        log::warning(
            QStringLiteral("cannot accept an application: %1. The agent tries again; it may need a higher "
                           "limit of open files or a lower --max-connections")
                .arg(reason));
    }
    if (std::exchange(m_isAcceptingLater, true))
        return;
    m_server.pauseAccepting();
    m_clock.callAfter(acceptAgainMs, this, [this] {
        m_isAcceptingLater = false;
        m_server.resumeAccepting();
    });
}

void ApplicationListener::turnAway(QTcpSocket* socket, const Identity& identity)
{
    ++m_refused;
    if (!m_isFullLogged && isFull())
        log::warning(identity.user,
                     QStringLiteral("an application (%1) is turned away: %2 are connected, as many as "
                                    "--max-connections allows. Further ones are not logged until one of "
                                    "them disconnects")
                         .arg(identityText(identity))
                         .arg(m_applications.connections().size()));
    else if (!m_isFullLogged)
        log::warning(
            identity.user,
            QStringLiteral("an application (%1) is turned away: its user has %2 connections, as many "
                           "as --max-connections allows for one user. Further ones are not logged "
                           "until an application disconnects")
                .arg(identityText(identity))
                .arg(mostFor(identity.user)));
    m_isFullLogged = true;
    discard(socket);
}

} // namespace agent
