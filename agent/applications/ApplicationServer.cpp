// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationServer.h"

#include <algorithm>
#include <utility>

#include "agent/applications/ApplicationConnection.h"
#include "agent/cells/VigilTables.h"
#include "agent/core/Descriptors.h"
#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 acceptAgainMs = 1000;
constexpr qint64 descriptorWarningPauseMs = 60'000;

QString valueText(const CellValue& value)
{
    if (const int* number = std::get_if<int>(&value))
        return QString::number(*number);
    return QLatin1Char('"') + QString::fromStdString(std::get<std::string>(value)) + QLatin1Char('"');
}

void discard(QTcpSocket* socket)
{
    socket->abort();
    socket->deleteLater();
}

/// A user may take as much as remains free afterwards: half of all if alone, a third beside one other. So the
/// next user finds room, and none has to give anything back.
bool isFair(const User& user, size_t ofUser, size_t ofAll, size_t limit)
{
    return ofAll <= limit && (user == platform::rootUser || ofUser <= limit - ofAll);
}

void logDisconnected(const ApplicationInfo& application, size_t cells)
{
    const User& user = application.identity.user;
    if (cells > 0)
        log::warning(
            user, QStringLiteral("%1 has disconnected without removing its %2 cells; its health checks turn "
                                 "UNKNOWN unless it reconnects. An application that shuts down cleanly "
                                 "destroys them first")
                      .arg(nameOf(application))
                      .arg(cells));
    else
        log::detail(user, [&] { return QStringLiteral("%1 has disconnected").arg(nameOf(application)); });
}

} // namespace

ApplicationServer::ApplicationServer(ServedCells& cells, Clock& clock, const Limits& limits,
                                     Identify identify)
    : m_cells(cells),
      m_clock(clock),
      m_limits(limits),
      m_identify(std::move(identify)),
      m_cellLimits(cells.store(), limits)
{
    connect(&m_cells, &ServedCells::applicationGone, this,
            [this](ApplicationId application) { m_lost.erase(application); });
    connect(&m_server, &QTcpServer::newConnection, this, &ApplicationServer::acceptAll);
    connect(&m_server, &QTcpServer::acceptError, this, [this] { acceptLater(m_server.errorString()); });
}

Error ApplicationServer::listen(const QHostAddress& host, quint16 port)
{
    return m_server.listen(host, port) ? Error() : Error(m_server.errorString());
}

Error ApplicationServer::listen(int descriptor)
{
    return m_server.setSocketDescriptor(descriptor) ? Error() : Error(m_server.errorString());
}

QString ApplicationServer::address() const
{
    const QHostAddress host = m_server.serverAddress();
    const bool isIPv6 = host.protocol() == QAbstractSocket::IPv6Protocol;
    return QStringLiteral("%1:%2")
        .arg(isIPv6 ? QStringLiteral("[%1]").arg(host.toString()) : host.toString())
        .arg(m_server.serverPort());
}

std::vector<ApplicationInfo> ApplicationServer::applications() const
{
    std::map<ApplicationId, ApplicationInfo> all = m_lost;
    for (const auto& [application, connection] : m_connections)
        all[application] = connection->info();
    std::vector<ApplicationInfo> list;
    for (auto& [application, info] : all) {
        info.cells = m_cells.store().countOf(application);
        list.push_back(std::move(info));
    }
    return list;
}

std::vector<SavedApplication> ApplicationServer::lostApplications() const
{
    std::vector<SavedApplication> saved;
    for (const auto& [application, info] : m_lost) {
        SavedApplication each{info, m_cells.checksOf(application)};
        if (!each.checks.empty())
            saved.push_back(std::move(each));
    }
    return saved;
}

std::vector<SavedApplication> ApplicationServer::ownersOf(const std::vector<ObjectId>& checks) const
{
    std::map<ApplicationId, SavedApplication> owners;
    for (const ObjectId& check : checks) {
        const std::optional<LostCheck> shown = m_cells.shownCheck(check);
        const auto connection = shown ? m_connections.find(m_cells.ownerOf(check)) : m_connections.end();
        if (connection == m_connections.end())
            continue;
        SavedApplication& owner = owners[connection->first];
        owner.info = connection->second->info();
        owner.checks.push_back(*shown);
    }
    std::vector<SavedApplication> list;
    list.reserve(owners.size());
    for (auto& [application, saved] : owners)
        list.push_back(std::move(saved));
    return list;
}

void ApplicationServer::restore(const SavedApplication& application)
{
    const ApplicationId number = ++m_lastApplication;
    ApplicationInfo& info = m_lost[number] = application.info;
    info.number = number;
    if (info.state == ApplicationInfo::State::Connected)
        info.since = m_clock.nowUtc();
    info.state = ApplicationInfo::State::Lost;
    m_cells.restore(ownerOf(number), info.since, application.checks);
    if (m_cells.store().countOf(number) == 0)
        m_lost.erase(number);
}

void ApplicationServer::ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value)
{
    const auto connection = m_connections.find(owner);
    if (connection == m_connections.end())
        return;
    log::detail([&] {
        return QStringLiteral("SET %1 of %2 to %3: asking %4")
            .arg(number)
            .arg(toText(id), valueText(value), connection->second->name());
    });
    connection->second->ask(number, id, value);
}

void ApplicationServer::commit(ApplicationId owner, const ObjectId& id, const CellValue& value)
{
    const auto connection = m_connections.find(owner);
    if (connection == m_connections.end())
        return;
    log::detail(
        [&] { return QStringLiteral("%1 is now %2, set by a manager").arg(toText(id), valueText(value)); });
    connection->second->commit(id, value);
}

void ApplicationServer::acceptAll()
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
        else if (hasRoomFor(identity.user) || makeRoomFor(identity.user))
            accept(socket, identity);
        else
            turnAway(socket, identity);
    }
}

/// The most for one user. The rest is for others.
size_t ApplicationServer::connectionsFor(const User& user) const
{
    const auto all = static_cast<size_t>(m_limits.connections);
    return user == platform::rootUser ? all : all - all / 8;
}

std::map<User, size_t> ApplicationServer::connectionsByUser() const
{
    std::map<User, size_t> counts;
    for (const auto& [application, connection] : m_connections)
        ++counts[connection->info().identity.user];
    return counts;
}

bool ApplicationServer::isFull() const
{
    return m_connections.size() >= static_cast<size_t>(m_limits.connections);
}

bool ApplicationServer::hasRoomFor(const User& user) const
{
    return !isFull() && connectionsByUser()[user] < connectionsFor(user);
}

/// The oldest silent connection makes room: an application sends its values as soon as it is connected. A
/// user without a place left gives up one of its own.
bool ApplicationServer::makeRoomFor(const User& user)
{
    const bool isShareUsed = connectionsByUser()[user] >= connectionsFor(user);
    const auto oldest = std::find_if(m_connections.begin(), m_connections.end(), [&](const auto& entry) {
        const ApplicationConnection& connection = *entry.second;
        return connection.isSilent() && (!isShareUsed || connection.info().identity.user == user);
    });
    if (oldest == m_connections.end())
        return false;
    oldest->second->closeSilent();
    return true;
}

bool ApplicationServer::isAllowed(const Identity& identity)
{
    if (m_limits.users.empty() || (identity.user && m_limits.users.count(*identity.user) > 0))
        return true;
    ++m_counts.connectionsRefused;
    if (m_refusedUsers.insert(identity.user).second)
        log::warning(QStringLiteral("an application (%1) is turned away: --allow-users does not name its "
                                    "user. Further ones of this user are not logged")
                         .arg(identityText(identity)));
    return false;
}

/// Qt itself stops accepting after an error.
void ApplicationServer::acceptLater(const QString& reason)
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

void ApplicationServer::turnAway(QTcpSocket* socket, const Identity& identity)
{
    ++m_counts.connectionsRefused;
    if (!m_isFullLogged && isFull())
        log::warning(identity.user,
                     QStringLiteral("an application (%1) is turned away: %2 are connected, as many as "
                                    "--max-connections allows. Further ones are not logged until one of "
                                    "them disconnects")
                         .arg(identityText(identity))
                         .arg(m_connections.size()));
    else if (!m_isFullLogged)
        log::warning(
            identity.user,
            QStringLiteral("an application (%1) is turned away: its user has %2 connections, as many "
                           "as --max-connections allows for one user. Further ones are not logged "
                           "until an application disconnects")
                .arg(identityText(identity))
                .arg(connectionsFor(identity.user)));
    m_isFullLogged = true;
    discard(socket);
}

void ApplicationServer::accept(QTcpSocket* socket, const Identity& identity)
{
    const ApplicationId application = ++m_lastApplication;
    auto* connection = new ApplicationConnection(socket, application, identity, m_clock, m_limits, this);
    m_connections[application] = connection;
    connect(connection, &ApplicationConnection::valueReceived, this,
            [this, application](const ObjectId& id, const CellValue& value, bool notify) {
                publish(application, id, value, notify);
            });
    connect(connection, &ApplicationConnection::unsetReceived, this,
            [this, application](const ObjectId& tree) { unset(application, tree); });
    connect(connection, &ApplicationConnection::answerReceived, this,
            [this, application](int number, int status) { emit answered(application, number, status); });
    connect(connection, &ApplicationConnection::memoryChanged, this,
            [this, application](size_t before, size_t after) { handleMemory(application, before, after); });
    connect(connection, &ApplicationConnection::lost, this,
            [this, application] { handleDisconnected(application); });
    log::detail(identity.user, [&] { return QStringLiteral("%1 has connected").arg(connection->name()); });
}

void ApplicationServer::publish(ApplicationId application, const ObjectId& id, const CellValue& value,
                                bool notify)
{
    if (const Error error = CellLimits::checkIdentifier(id))
        return refuse(application, id, error);
    if (const Error error = m_cellLimits.checkText(id, value)) {
        m_warnings.warn(ownerOf(application), id, error.text());
        return publish(application, id, m_cellLimits.cutText(value), notify);
    }
    if (const Error error = vigilTables::checkCell(id, value))
        return refuse(application, id, error);
    if (const Error error = checkOwner(application, id))
        return refuse(application, id, error);
    if (const Error error = m_cellLimits.checkCount(application, id))
        return refuse(application, ObjectId(), error);
    if (const Error error = checkUserCount(application, id))
        return refuse(application, ObjectId(), error);
    if (const Error error = checkMemory(application, id, value)) {
        refuse(application, ObjectId(), error);
        return removeOutdated(application, id);
    }
    log::detail(find(application)->identity.user, [&] {
        return QStringLiteral("%1: %2 = %3").arg(nameOf(application), toText(id), valueText(value));
    });
    const std::optional<ApplicationId> previousOwner = m_cells.publish(application, id, value);
    if (previousOwner)
        m_warnings.warn(ownerOf(application), id,
                        QStringLiteral("has taken over %1 from %2; two applications publish the same object")
                            .arg(toText(id), nameOf(*previousOwner)));
    if (notify)
        emit notificationWanted(id);
}

/// A cell of a lost application still belongs to its user. If that is unknown, the cell is free: the process
/// may have ended before the system was asked, and must be able to return.
Error ApplicationServer::checkOwner(ApplicationId application, const ObjectId& id)
{
    const Cell* cell = m_cells.store().find(id);
    if (!cell || cell->owner == application)
        return {};
    const User owner = ownerOf(cell->owner).user;
    const bool isFree = !owner && !isConnected(cell->owner);
    if (isFree || mayChange(find(application)->identity.user, owner))
        return {};
    ++m_counts.takeoversRefused;
    return Error(QStringLiteral("publishes %1, which belongs to another user: %2. It is not served; give the "
                                "health checks different keys, or run both applications as one user")
                     .arg(toText(id), nameOf(cell->owner)));
}

/// Lost applications do not count: their cells make room for each other.
Error ApplicationServer::checkUserCount(ApplicationId application, const ObjectId& id) const
{
    const auto most = static_cast<size_t>(m_limits.userCells);
    const User& user = find(application)->identity.user;
    if (m_cells.store().size() < most || user == platform::rootUser)
        return {};
    const Cell* cell = m_cells.store().find(id);
    if ((cell && cell->owner == application) || cellsOf(user) < most)
        return {};
    return Error(
        QStringLiteral("publishes more cells than --max-user-cells allows for all applications of its "
                       "user (%1); the others are not served, the first of them is %2")
            .arg(most)
            .arg(toText(id)));
}

size_t ApplicationServer::cellsOf(const User& user) const
{
    size_t cells = 0;
    for (const auto& [application, connection] : m_connections) {
        if (connection->info().identity.user == user)
            cells += m_cells.store().countOf(application);
    }
    return cells;
}

Error ApplicationServer::checkMemory(ApplicationId application, const ObjectId& id, const CellValue& value)
{
    const size_t after = CellStore::memoryOf(id, value);
    if (2 * (m_cells.store().memory() + after) <= m_limits.cellMemory())
        return {}; // most updates: no look-up
    const Cell* cell = m_cells.store().find(id);
    const size_t before = cell && cell->owner == application ? CellStore::memoryOf(id, cell->value) : 0;
    if (after <= before || makeMemoryFor(find(application)->identity.user, after - before))
        return {};
    return Error(QStringLiteral("publishes more than fits into the share of its user in --max-memory; the "
                                "others are not served, the first of them is %1")
                     .arg(toText(id)));
}

bool ApplicationServer::hasMemoryFor(const User& user, size_t more) const
{
    return isFair(user, cellMemoryOf(user) + more, m_cells.store().memory() + more, m_limits.cellMemory());
}

/// The lost applications of the user make room, the oldest first, if all together take enough.
bool ApplicationServer::makeMemoryFor(const User& user, size_t more)
{
    if (hasMemoryFor(user, more))
        return true;
    const size_t lost = lostMemoryOf(user);
    const size_t kept = cellMemoryOf(user) - lost;
    if (!isFair(user, kept + more, m_cells.store().memory() - lost + more, m_limits.cellMemory()))
        return false;
    while (!hasMemoryFor(user, more)) {
        if (!m_cells.removeOldestLossOf(user))
            return false;
    }
    return true;
}

size_t ApplicationServer::cellMemoryOf(const User& user) const
{
    size_t memory = 0;
    for (const auto& [application, connection] : m_connections) {
        if (connection->info().identity.user == user)
            memory += m_cells.store().memoryOf(application);
    }
    return memory + lostMemoryOf(user);
}

size_t ApplicationServer::lostMemoryOf(const User& user) const
{
    size_t memory = 0;
    for (const auto& [application, info] : m_lost) {
        if (info.identity.user == user)
            memory += m_cells.store().memoryOf(application);
    }
    return memory;
}

/// An unfinished frame cannot be refused, so its connection ends.
void ApplicationServer::handleMemory(ApplicationId application, size_t before, size_t after)
{
    m_frameMemory += after - before;
    ApplicationConnection* connection = m_connections.at(application);
    const User& user = connection->info().identity.user;
    if (after > before && !isFair(user, frameMemoryOf(user), m_frameMemory, m_limits.frameMemory()))
        connection->closeLarge();
}

size_t ApplicationServer::frameMemoryOf(const User& user) const
{
    size_t memory = 0;
    for (const auto& [application, connection] : m_connections) {
        if (connection->info().identity.user == user)
            memory += connection->memory();
    }
    return memory;
}

/// id is empty for an error about all cells of the application.
void ApplicationServer::refuse(ApplicationId application, const ObjectId& id, const Error& error)
{
    m_connections.at(application)->countRefusal();
    m_warnings.warn(ownerOf(application), id, error.text());
    removeOutdated(application, id);
}

/// No value is better than an outdated one.
void ApplicationServer::removeOutdated(ApplicationId application, const ObjectId& id)
{
    const Cell* cell = m_cells.store().find(id);
    if (cell && cell->owner == application)
        m_cells.unset(application, id);
}

void ApplicationServer::unset(ApplicationId application, const ObjectId& tree)
{
    const size_t removed = m_cells.unset(application, tree);
    log::detail(find(application)->identity.user, [&] {
        return QStringLiteral("%1: %2 unset, cells removed: %3")
            .arg(nameOf(application), toText(tree))
            .arg(removed);
    });
}

void ApplicationServer::handleDisconnected(ApplicationId application)
{
    ApplicationConnection* connection = m_connections.at(application);
    if (connection->isMalformed())
        ++m_counts.protocolErrors;
    logDisconnected(connection->info(), m_cells.store().countOf(application));
    ApplicationInfo& info = m_lost[application] = connection->info();
    info.state = ApplicationInfo::State::Lost;
    info.since = m_clock.nowUtc();
    connection->deleteLater();
    m_connections.erase(application);
    m_warnings.forget(application);
    m_isFullLogged = false;
    if (!m_cells.lose(ownerOf(application)))
        m_lost.erase(application);
    emit lost(application);
}

/// Null if it is neither connected nor lost.
const ApplicationInfo* ApplicationServer::find(ApplicationId application) const
{
    const auto connection = m_connections.find(application);
    if (connection != m_connections.end())
        return &connection->second->info();
    const auto lost = m_lost.find(application);
    return lost == m_lost.end() ? nullptr : &lost->second;
}

QString ApplicationServer::nameOf(ApplicationId application) const
{
    const ApplicationInfo* info = find(application);
    return info ? agent::nameOf(*info) : QStringLiteral("application %1").arg(application);
}

Owner ApplicationServer::ownerOf(ApplicationId application) const
{
    const ApplicationInfo* info = find(application);
    return {application, info ? info->identity.user : User(), nameOf(application)};
}

} // namespace agent
