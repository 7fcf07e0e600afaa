// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationList.h"

#include <utility>

#include "agent/applications/ApplicationConnection.h"

namespace agent {

namespace {

/// The sum of amount(connection) over the user's connections.
template <typename Amount>
size_t sumOf(const ApplicationList::Connections& connections, const User& user, Amount amount)
{
    size_t sum = 0;
    for (const auto& [application, connection] : connections) {
        if (connection->info().identity.user == user)
            sum += amount(*connection);
    }
    return sum;
}

} // namespace

void ApplicationList::add(ApplicationConnection* connection)
{
    m_connections[connection->info().number] = connection;
}

void ApplicationList::lose(ApplicationId application, const QDateTime& now)
{
    const auto connection = m_connections.find(application);
    ApplicationInfo& info = m_lost[application] = connection->second->info();
    info.state = ApplicationInfo::State::Lost;
    info.since = now;
    m_connections.erase(connection);
}

std::vector<ApplicationInfo> ApplicationList::all() const
{
    Lost all = m_lost;
    for (const auto& [application, connection] : m_connections)
        all[application] = connection->info();
    std::vector<ApplicationInfo> list;
    list.reserve(all.size());
    for (auto& [application, info] : all) {
        info.cells = m_cells.countOf(application);
        list.push_back(std::move(info));
    }
    return list;
}

std::optional<ApplicationInfo> ApplicationList::next(ApplicationId application) const
{
    const auto connected = m_connections.upper_bound(application);
    const auto lost = m_lost.upper_bound(application);
    if (connected == m_connections.end() && lost == m_lost.end())
        return std::nullopt;
    const bool isLost =
        connected == m_connections.end() || (lost != m_lost.end() && lost->first < connected->first);
    ApplicationInfo info = isLost ? lost->second : connected->second->info();
    info.cells = m_cells.countOf(info.number);
    return info;
}

ApplicationConnection* ApplicationList::connection(ApplicationId application) const
{
    const auto connection = m_connections.find(application);
    return connection == m_connections.end() ? nullptr : connection->second;
}

const ApplicationInfo* ApplicationList::find(ApplicationId application) const
{
    if (const ApplicationConnection* connected = connection(application))
        return &connected->info();
    const auto lost = m_lost.find(application);
    return lost == m_lost.end() ? nullptr : &lost->second;
}

QString ApplicationList::nameOf(ApplicationId application) const
{
    const ApplicationInfo* info = find(application);
    return info ? agent::nameOf(*info) : QStringLiteral("application %1").arg(application);
}

Owner ApplicationList::ownerOf(ApplicationId application) const
{
    const ApplicationInfo* info = find(application);
    return {application, info ? info->identity.user : User(), nameOf(application)};
}

size_t ApplicationList::connectionsOf(const User& user) const
{
    return sumOf(m_connections, user, [](const ApplicationConnection&) { return size_t{1}; });
}

size_t ApplicationList::cellsOf(const User& user) const
{
    return sumOf(m_connections, user, [this](const ApplicationConnection& connection) {
        return m_cells.countOf(connection.info().number);
    });
}

size_t ApplicationList::cellMemoryOf(const User& user) const
{
    return lostMemoryOf(user) + sumOf(m_connections, user, [this](const ApplicationConnection& connection) {
               return m_cells.memoryOf(connection.info().number);
           });
}

size_t ApplicationList::lostMemoryOf(const User& user) const
{
    size_t memory = 0;
    for (const auto& [application, info] : m_lost) {
        if (info.identity.user == user)
            memory += m_cells.memoryOf(application);
    }
    return memory;
}

size_t ApplicationList::frameMemoryOf(const User& user) const
{
    return sumOf(m_connections, user,
                 [](const ApplicationConnection& connection) { return connection.memory(); });
}

} // namespace agent
