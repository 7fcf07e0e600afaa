// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONLIST_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONLIST_H

#include <QString>

#include <cstddef>
#include <map>
#include <optional>
#include <vector>

#include "agent/applications/ApplicationInfo.h"
#include "agent/cells/CellStore.h"
#include "agent/cells/Owner.h"

namespace agent {

class ApplicationConnection;

/// The applications the agent knows: the connected ones, and the lost ones that still have cells. It sums up
/// what all applications of one user take.
///
/// Ownership: cells must outlive the list. It does not own the connections.
class ApplicationList
{
public:
    using Connections = std::map<ApplicationId, ApplicationConnection*>;
    using Lost = std::map<ApplicationId, ApplicationInfo>;

    explicit ApplicationList(const CellStore& cells) : m_cells(cells) {}

    /// The number of the next application. None is used twice.
    ApplicationId takeNumber() { return ++m_lastNumber; }

    void add(ApplicationConnection* connection);

    /// The connected application is lost from now on.
    void lose(ApplicationId application, const QDateTime& now);

    void addLost(const ApplicationInfo& application) { m_lost[application.number] = application; }

    /// The lost application has no cell left.
    void forget(ApplicationId application) { m_lost.erase(application); }

    const Connections& connections() const { return m_connections; }
    const Lost& lost() const { return m_lost; }

    /// The connected and the lost applications, in the order of their numbers.
    std::vector<ApplicationInfo> all() const;

    /// The first with a larger number, or nothing.
    std::optional<ApplicationInfo> next(ApplicationId application) const;

    /// Null if the application is not connected.
    ApplicationConnection* connection(ApplicationId application) const;

    /// Null if it is neither connected nor lost.
    const ApplicationInfo* find(ApplicationId application) const;

    QString nameOf(ApplicationId application) const;
    Owner ownerOf(ApplicationId application) const;

    size_t connectionsOf(const User& user) const;

    /// Those of connected applications.
    size_t cellsOf(const User& user) const;

    // In bytes.
    size_t cellMemoryOf(const User& user) const;
    size_t lostMemoryOf(const User& user) const;
    size_t frameMemoryOf(const User& user) const;

private:
    const CellStore& m_cells;
    Connections m_connections;
    Lost m_lost;
    ApplicationId m_lastNumber = 0;
};

} // namespace agent

#endif
