// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationServer.h"

#include "agent/applications/ApplicationConnection.h"
#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 acceptAgainMs = 1000;

QString valueText(const CellValue& value)
{
    if (const int* number = std::get_if<int>(&value))
        return QString::number(*number);
    return QLatin1Char('"') + QString::fromStdString(std::get<std::string>(value)) + QLatin1Char('"');
}

} // namespace

ApplicationServer::ApplicationServer(ServedCells& cells, Clock& clock, const Limits& limits)
    : m_cells(cells), m_clock(clock), m_limits(limits), m_cellLimits(cells.store(), limits)
{
    connect(&m_cells, &ServedCells::applicationGone, this,
            [this](ApplicationId owner) { m_lost.erase(owner); });
    connect(&m_server, &QTcpServer::newConnection, this, &ApplicationServer::acceptAll);
    connect(&m_server, &QTcpServer::acceptError, this, &ApplicationServer::acceptLater);
}

bool ApplicationServer::listen(const QHostAddress& host, quint16 port)
{
    return m_server.listen(host, port);
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
    for (const auto& [owner, connection] : m_connections)
        all[owner] = connection->info();
    std::vector<ApplicationInfo> list;
    for (auto& [owner, info] : all) {
        info.cells = m_cells.store().countOf(owner);
        list.push_back(std::move(info));
    }
    return list;
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
        if (m_connections.size() < static_cast<size_t>(m_limits.connections))
            accept(socket);
        else
            turnAway(socket);
    }
}

/// Qt stops listening when a connection cannot be had, which may be for want of descriptors.
void ApplicationServer::acceptLater()
{
    log::warning(
        QStringLiteral("an application cannot connect: %1. The agent tries again; it may need a higher "
                       "limit of open files or a lower --max-connections")
            .arg(m_server.errorString()));
    m_clock.callAfter(acceptAgainMs, this, [this] { m_server.resumeAccepting(); });
}

void ApplicationServer::turnAway(QTcpSocket* socket)
{
    if (!m_isFullTold)
        log::warning(QStringLiteral("an application is turned away: %1 are connected, as many as "
                                    "--max-connections allows. This is not repeated until one of them leaves")
                         .arg(m_connections.size()));
    m_isFullTold = true;
    socket->abort();
    socket->deleteLater();
}

void ApplicationServer::accept(QTcpSocket* socket)
{
    const ApplicationId owner = ++m_lastOwner;
    auto* connection = new ApplicationConnection(socket, owner, m_clock, m_limits, this);
    m_connections[owner] = connection;
    connect(connection, &ApplicationConnection::valueReceived, this,
            [this, owner](const ObjectId& id, const CellValue& value, bool notify) {
                storeValue(owner, id, value, notify);
            });
    connect(connection, &ApplicationConnection::unsetReceived, this,
            [this, owner](const ObjectId& tree) { unsetTree(owner, tree); });
    connect(connection, &ApplicationConnection::answerReceived, this,
            [this, owner](int number, int errorStatus) { emit answered(owner, number, errorStatus); });
    connect(connection, &ApplicationConnection::lost, this, [this, owner] { remove(owner); });
    log::detail([&] { return QStringLiteral("%1 has connected").arg(connection->name()); });
}

void ApplicationServer::storeValue(ApplicationId owner, const ObjectId& id, const CellValue& value,
                                   bool notify)
{
    QString problem = m_cellLimits.cellProblem(id, value);
    if (!problem.isEmpty())
        return refuse(owner, id, problem);
    problem = m_cellLimits.countProblem(owner, id);
    if (!problem.isEmpty())
        return refuse(owner, ObjectId(), problem);
    log::detail(
        [&] { return QStringLiteral("%1: %2 = %3").arg(nameOf(owner), toText(id), valueText(value)); });
    const std::optional<ApplicationId> previous = m_cells.publish(owner, id, value);
    if (previous)
        m_warnings.warn(
            owner, id,
            QStringLiteral("%1 has taken %2 over from %3; two applications publish the same object")
                .arg(nameOf(owner), toText(id), nameOf(*previous)));
    if (notify)
        emit notificationWanted(id);
}

/// id is what the problem is about, and empty for the connection as a whole.
void ApplicationServer::refuse(ApplicationId owner, const ObjectId& id, const QString& problem)
{
    m_connections.at(owner)->countRefusal();
    m_warnings.warn(owner, id, QStringLiteral("%1 %2").arg(nameOf(owner), problem));
    const Cell* cell = m_cells.store().find(id);
    if (cell && cell->owner == owner)
        m_cells.unset(owner, id); // rather no value than one that the application has replaced
}

void ApplicationServer::unsetTree(ApplicationId owner, const ObjectId& tree)
{
    const size_t removed = m_cells.unset(owner, tree);
    log::detail([&] {
        return QStringLiteral("%1: %2 unset, cells removed: %3")
            .arg(nameOf(owner), toText(tree))
            .arg(removed);
    });
}

void ApplicationServer::remove(ApplicationId owner)
{
    ApplicationConnection* connection = m_connections.at(owner);
    const size_t left = m_cells.store().countOf(owner);
    if (left > 0)
        log::warning(
            QStringLiteral("%1 has disconnected and left %2 cells behind; its health checks turn UNKNOWN "
                           "unless it comes back. An application that ends in order destroys them first")
                .arg(connection->name())
                .arg(left));
    else
        log::detail([&] { return QStringLiteral("%1 has disconnected").arg(connection->name()); });
    ApplicationInfo& info = m_lost[owner] = connection->info();
    info.state = ApplicationInfo::State::Lost;
    info.since = m_clock.nowUtc();
    connection->deleteLater();
    m_connections.erase(owner);
    m_warnings.forget(owner);
    m_isFullTold = false;
    if (!m_cells.lose(owner))
        m_lost.erase(owner);
    emit lost(owner);
}

QString ApplicationServer::nameOf(ApplicationId owner) const
{
    const auto connection = m_connections.find(owner);
    return connection == m_connections.end() ? QStringLiteral("application %1").arg(owner)
                                             : connection->second->name();
}

} // namespace agent
