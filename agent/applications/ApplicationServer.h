// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONSERVER_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONSERVER_H

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>

#include <map>
#include <set>
#include <vector>

#include "agent/applications/ApplicationInfo.h"
#include "agent/applications/CellLimits.h"
#include "agent/applications/CellWarnings.h"
#include "agent/applications/Identity.h"
#include "agent/applications/Limits.h"
#include "agent/applications/SavedApplication.h"
#include "agent/cells/CellOwners.h"
#include "agent/cells/CellStore.h"
#include "agent/cells/ServedCells.h"
#include "agent/core/Clock.h"
#include "agent/core/Error.h"

namespace agent {

class ApplicationConnection;

/// Accepts the applications of this host and publishes their values.
///
/// It has one ApplicationConnection for each connected application, and keeps the ApplicationInfo of a lost
/// one until its last cell is gone. Only the user who has published a cell, or root, may publish it in a
/// later application.
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

    Error listen(const QHostAddress& host, quint16 port);

    /// The same with a socket that listens already. The server owns it.
    Error listen(int descriptor);

    /// The host and port it listens on.
    QString address() const;

    /// The connected applications, and the lost ones with cells, in the order of their numbers.
    std::vector<ApplicationInfo> applications() const;

    bool isConnected(ApplicationId application) const override
    {
        return m_connections.count(application) > 0;
    }
    QString nameOf(ApplicationId application) const override;
    void ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value) override;
    void commit(ApplicationId owner, const ObjectId& id, const CellValue& value) override;

    /// The memory of cells and unfinished frames, in bytes. It never exceeds the limit by more than a burst.
    size_t memory() const { return m_cells.store().memory() + m_frameMemory; }

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
    const Counts& counts() const { return m_counts; }

signals:
    void answered(agent::ApplicationId application, int number, int errorStatus);

    /// The application has disconnected and can no longer answer.
    void lost(agent::ApplicationId application);

    /// The application wants a notification about a value. The cell already has it.
    void notificationWanted(const agent::ObjectId& id);

private:
    void acceptAll();
    void acceptLater(const QString& reason);
    void accept(QTcpSocket* socket, const Identity& identity);
    bool isAllowed(const Identity& identity);
    bool hasRoomFor(const User& user) const;
    bool makeRoomFor(const User& user);
    bool isFull() const;
    size_t connectionsFor(const User& user) const;
    std::map<User, size_t> connectionsByUser() const;
    void turnAway(QTcpSocket* socket, const Identity& identity);
    void publish(ApplicationId application, const ObjectId& id, const CellValue& value, bool notify);
    void unset(ApplicationId application, const ObjectId& tree);
    Error checkOwner(ApplicationId application, const ObjectId& id);
    Error checkUserCount(ApplicationId application, const ObjectId& id) const;
    Error checkMemory(ApplicationId application, const ObjectId& id, const CellValue& value);
    void handleMemory(ApplicationId application, size_t before, size_t after);
    bool hasMemoryFor(const User& user, size_t more) const;
    bool makeMemoryFor(const User& user, size_t more);
    size_t cellMemoryOf(const User& user) const;
    size_t lostMemoryOf(const User& user) const;
    size_t frameMemoryOf(const User& user) const;
    size_t cellsOf(const User& user) const;
    void refuse(ApplicationId application, const ObjectId& id, const Error& error);
    void removeOutdated(ApplicationId application, const ObjectId& id);
    void handleDisconnected(ApplicationId application);
    const ApplicationInfo* find(ApplicationId application) const;
    Owner ownerOf(ApplicationId application) const;

    QTcpServer m_server;
    ServedCells& m_cells;
    Clock& m_clock;
    const Limits m_limits;
    const Identify m_identify;
    const CellLimits m_cellLimits;
    CellWarnings m_warnings;
    std::map<ApplicationId, ApplicationConnection*> m_connections;
    std::map<ApplicationId, ApplicationInfo> m_lost;
    ApplicationId m_lastApplication = 0;
    Counts m_counts;
    size_t m_frameMemory = 0; // of unfinished frames
    bool m_isFullLogged = false;
    qint64 m_nextDescriptorWarningMs = 0;
    bool m_isAcceptingLater = false;
    std::set<User> m_refusedUsers; // those in the log
};

} // namespace agent

#endif
