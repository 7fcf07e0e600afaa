// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationServer.h"

#include <utility>

#include "agent/applications/ApplicationConnection.h"
#include "agent/cells/VigilTables.h"
#include "agent/core/Log.h"

namespace agent {

namespace {

QString valueText(const CellValue& value)
{
    if (const int* number = std::get_if<int>(&value))
        return QString::number(*number);
    return QLatin1Char('"') + QString::fromStdString(std::get<std::string>(value)) + QLatin1Char('"');
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
      m_cellLimits(cells.store(), limits),
      m_applications(cells.store()),
      m_listener(m_applications, clock, m_limits, std::move(identify)),
      m_memory(cells, m_applications, m_limits)
{
    connect(&m_cells, &ServedCells::applicationGone, this,
            [this](ApplicationId application) { m_applications.forget(application); });
    connect(&m_listener, &ApplicationListener::accepted, this, &ApplicationServer::accept);
}

std::vector<SavedApplication> ApplicationServer::lostApplications() const
{
    std::vector<SavedApplication> saved;
    for (const auto& [application, info] : m_applications.lost()) {
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
        if (!shown)
            continue;
        const ApplicationId application = m_cells.ownerOf(check);
        if (!isConnected(application))
            continue;
        SavedApplication& owner = owners[application];
        owner.info = *m_applications.find(application);
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
    ApplicationInfo info = application.info;
    info.number = m_applications.takeNumber();
    if (info.state == ApplicationInfo::State::Connected)
        info.since = m_clock.nowUtc();
    info.state = ApplicationInfo::State::Lost;
    m_applications.addLost(info);
    m_cells.restore(m_applications.ownerOf(info.number), info.since, application.checks);
    if (m_cells.store().countOf(info.number) == 0)
        m_applications.forget(info.number);
}

void ApplicationServer::ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value)
{
    ApplicationConnection* connection = m_applications.connection(owner);
    if (!connection)
        return;
    log::detail([&] {
        return QStringLiteral("SET %1 of %2 to %3: asking %4")
            .arg(number)
            .arg(toText(id), valueText(value), connection->name());
    });
    connection->ask(number, id, value);
}

void ApplicationServer::commit(ApplicationId owner, const ObjectId& id, const CellValue& value)
{
    ApplicationConnection* connection = m_applications.connection(owner);
    if (!connection)
        return;
    log::detail(
        [&] { return QStringLiteral("%1 is now %2, set by a manager").arg(toText(id), valueText(value)); });
    connection->commit(id, value);
}

void ApplicationServer::accept(QTcpSocket* socket, const Identity& identity)
{
    const ApplicationId application = m_applications.takeNumber();
    auto* connection = new ApplicationConnection(socket, application, identity, m_clock, m_limits, this);
    m_applications.add(connection);
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
        m_warnings.warn(m_applications.ownerOf(application), id, error.text());
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
    if (!m_memory.makeRoomFor(application, id, value)) {
        refuse(application, ObjectId(),
               Error(QStringLiteral("publishes more than fits into the share of its user in --max-memory; "
                                    "the others are not served, the first of them is %1")
                         .arg(toText(id))));
        return removeOutdated(application, id);
    }
    log::detail(m_applications.find(application)->identity.user, [&] {
        return QStringLiteral("%1: %2 = %3").arg(nameOf(application), toText(id), valueText(value));
    });
    const std::optional<ApplicationId> previousOwner = m_cells.publish(application, id, value);
    if (previousOwner)
        m_warnings.warn(m_applications.ownerOf(application), id,
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
    const User owner = m_applications.ownerOf(cell->owner).user;
    const bool isFree = !owner && !isConnected(cell->owner);
    if (isFree || mayChange(m_applications.find(application)->identity.user, owner))
        return {};
    ++m_takeoversRefused;
    return Error(QStringLiteral("publishes %1, which belongs to another user: %2. It is not served; give the "
                                "health checks different keys, or run both applications as one user")
                     .arg(toText(id), nameOf(cell->owner)));
}

/// Lost applications do not count: their cells make room for each other.
Error ApplicationServer::checkUserCount(ApplicationId application, const ObjectId& id) const
{
    const auto most = static_cast<size_t>(m_limits.userCells);
    const User& user = m_applications.find(application)->identity.user;
    if (m_cells.store().size() < most || user == platform::rootUser())
        return {};
    const Cell* cell = m_cells.store().find(id);
    if ((cell && cell->owner == application) || m_applications.cellsOf(user) < most)
        return {};
    return Error(
        QStringLiteral("publishes more cells than --max-user-cells allows for all applications of its "
                       "user (%1); the others are not served, the first of them is %2")
            .arg(most)
            .arg(toText(id)));
}

/// An unfinished frame cannot be refused, so its connection ends.
void ApplicationServer::handleMemory(ApplicationId application, size_t before, size_t after)
{
    ApplicationConnection* connection = m_applications.connection(application);
    if (!m_memory.changeFrame(connection->info().identity.user, before, after))
        connection->closeLarge();
}

/// id is empty for an error about all cells of the application.
void ApplicationServer::refuse(ApplicationId application, const ObjectId& id, const Error& error)
{
    m_applications.connection(application)->countRefusal();
    m_warnings.warn(m_applications.ownerOf(application), id, error.text());
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
    log::detail(m_applications.find(application)->identity.user, [&] {
        return QStringLiteral("%1: %2 unset, cells removed: %3")
            .arg(nameOf(application), toText(tree))
            .arg(removed);
    });
}

void ApplicationServer::handleDisconnected(ApplicationId application)
{
    ApplicationConnection* connection = m_applications.connection(application);
    if (connection->isMalformed())
        ++m_protocolErrors;
    logDisconnected(connection->info(), m_cells.store().countOf(application));
    m_applications.lose(application, m_clock.nowUtc());
    connection->deleteLater();
    m_warnings.forget(application);
    m_listener.handleDisconnected();
    if (!m_cells.lose(m_applications.ownerOf(application)))
        m_applications.forget(application);
    emit lost(application);
}

} // namespace agent
