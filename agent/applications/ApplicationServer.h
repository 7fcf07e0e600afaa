// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONSERVER_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONSERVER_H

#include <QObject>

#include <vector>

#include "agent/applications/ApplicationInfo.h"
#include "agent/applications/ApplicationList.h"
#include "agent/applications/ApplicationListener.h"
#include "agent/applications/CellLimits.h"
#include "agent/applications/CellWarnings.h"
#include "agent/applications/Identity.h"
#include "agent/applications/Limits.h"
#include "agent/applications/MemoryShares.h"
#include "agent/applications/SavedApplication.h"
#include "agent/cells/CellOwners.h"
#include "agent/cells/CellStore.h"
#include "agent/cells/ServedCells.h"
#include "agent/core/Clock.h"
#include "agent/core/Error.h"

namespace agent {

/// Publishes the values of the applications of this host, as far as their user and the limits allow.
///
/// Only the user who has published a cell, or root, may publish it in a later application. What is refused is
/// removed, too: no value is better than an outdated one.
///
/// Ownership: cells and clock must outlive the server. It owns the connections.
/// Failure: an error ends only the connection it came from. Applications and cells beyond the limits are
/// refused with a warning.
class ApplicationServer : public QObject, public CellOwners
{
    Q_OBJECT

public:
    ApplicationServer(ServedCells& cells, Clock& clock, const Limits& limits,
                      Identify identify = &identityOf);

    // See ApplicationListener.
    Error listen(const QHostAddress& host, quint16 port) { return m_listener.listen(host, port); }
    Error listen(int descriptor) { return m_listener.listen(descriptor); }
    QString address() const { return m_listener.address(); }

    /// The connected applications, and the lost ones with cells, in the order of their numbers.
    std::vector<ApplicationInfo> applications() const { return m_applications.all(); }

    /// The first of them with a larger number, or nothing.
    std::optional<ApplicationInfo> next(ApplicationId application) const
    {
        return m_applications.next(application);
    }

    /// Nothing if the application is neither connected nor lost, or its user is not known.
    User userOf(ApplicationId application) const { return m_applications.ownerOf(application).user; }

    bool isConnected(ApplicationId application) const override
    {
        return m_applications.connection(application) != nullptr;
    }
    QString nameOf(ApplicationId application) const override { return m_applications.nameOf(application); }
    void ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value) override;
    void commit(ApplicationId owner, const ObjectId& id, const CellValue& value) override;

    /// The memory of cells and unfinished frames, in bytes. It never exceeds the limit by more than a burst.
    size_t memory() const { return m_cells.store().memory() + m_memory.frames(); }

    /// The limit of all that applications cause; notifications are a part of it.
    size_t memoryLimit() const { return m_limits.memory(); }

    /// The lost applications, for a restart of the agent.
    std::vector<SavedApplication> lostApplications() const;

    /// The connected applications that own these checks, with the checks as managers read them.
    std::vector<SavedApplication> ownersOf(const std::vector<ObjectId>& checks) const;

    /// Takes up an application of the agent's last run. One that was connected is lost from now on.
    void restore(const SavedApplication& application);

    /// Since the start.
    struct Counts
    {
        quint64 takeoversRefused = 0;   ///< cells that were not taken over: they belong to another user
        quint64 connectionsRefused = 0; ///< for want of room, or because of their user
        quint64 protocolErrors = 0;     ///< connections closed for malformed bytes
    };
    Counts counts() const { return {m_takeoversRefused, m_listener.refused(), m_protocolErrors}; }

signals:
    void answered(agent::ApplicationId application, int number, int errorStatus);

    /// The application has disconnected and can no longer answer.
    void lost(agent::ApplicationId application);

    /// The application wants a notification about a value. The cell already has it.
    void notificationWanted(const agent::ObjectId& id);

private:
    void accept(QTcpSocket* socket, const Identity& identity);
    void publish(ApplicationId application, const ObjectId& id, const CellValue& value, bool notify);
    void unset(ApplicationId application, const ObjectId& tree);
    Error checkOwner(ApplicationId application, const ObjectId& id);
    Error checkUserCount(ApplicationId application, const ObjectId& id) const;
    void handleMemory(ApplicationId application, size_t before, size_t after);
    void refuse(ApplicationId application, const ObjectId& id, const Error& error);
    void removeOutdated(ApplicationId application, const ObjectId& id);
    void handleDisconnected(ApplicationId application);

    ServedCells& m_cells;
    Clock& m_clock;
    const Limits m_limits;
    const CellLimits m_cellLimits;
    CellWarnings m_warnings;
    ApplicationList m_applications;
    ApplicationListener m_listener;
    MemoryShares m_memory;
    quint64 m_takeoversRefused = 0;
    quint64 m_protocolErrors = 0;
};

} // namespace agent

#endif
