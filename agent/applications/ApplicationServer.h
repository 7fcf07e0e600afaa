// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONSERVER_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONSERVER_H

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>

#include <map>
#include <vector>

#include "agent/applications/ApplicationInfo.h"
#include "agent/applications/CellLimits.h"
#include "agent/applications/CellWarnings.h"
#include "agent/applications/Limits.h"
#include "agent/cells/CellOwners.h"
#include "agent/cells/CellStore.h"
#include "agent/cells/ServedCells.h"
#include "agent/core/Clock.h"

namespace agent {

class ApplicationConnection;

/// Accepts the applications of this host and hands on what they publish.
///
/// Purpose: one ApplicationConnection for each application, and what there is to know about it for as long as
/// it has cells.
///
/// Threads: the agent has one.
/// Ownership: cells and clock must outlive the server, which owns the connections.
/// Failure: what is wrong with one connection ends that one alone. What is beyond the limits is refused with
/// a warning.
class ApplicationServer : public QObject, public CellOwners
{
    Q_OBJECT

public:
    ApplicationServer(ServedCells& cells, Clock& clock, const Limits& limits);

    /// False when the port cannot be had; errorText() says why.
    bool listen(const QHostAddress& host, quint16 port);
    QString errorText() const { return m_server.errorString(); }

    /// Host and port, as they are now.
    QString address() const;

    /// In the order of their numbers: those that are there, and the lost ones that have cells.
    std::vector<ApplicationInfo> applications() const;

    bool isConnected(ApplicationId owner) const override { return m_connections.count(owner) > 0; }
    void ask(ApplicationId owner, int number, const ObjectId& id, const CellValue& value) override;
    void commit(ApplicationId owner, const ObjectId& id, const CellValue& value) override;

signals:
    void answered(agent::ApplicationId owner, int number, int errorStatus);

    /// The owner can no longer be asked about its cells.
    void lost(agent::ApplicationId owner);

    /// A value has arrived for which the application wishes a notification; the cell has it already.
    void notificationWanted(const agent::ObjectId& id);

private:
    void acceptAll();
    void acceptLater();
    void accept(QTcpSocket* socket);
    void turnAway(QTcpSocket* socket);
    void storeValue(ApplicationId owner, const ObjectId& id, const CellValue& value, bool notify);
    void unsetTree(ApplicationId owner, const ObjectId& tree);
    void remove(ApplicationId owner);
    QString nameOf(ApplicationId owner) const;
    void refuse(ApplicationId owner, const ObjectId& id, const QString& problem);

    QTcpServer m_server;
    ServedCells& m_cells;
    Clock& m_clock;
    const Limits m_limits;
    const CellLimits m_cellLimits;
    CellWarnings m_warnings;
    std::map<ApplicationId, ApplicationConnection*> m_connections;
    std::map<ApplicationId, ApplicationInfo> m_lost;
    ApplicationId m_lastOwner = 0;
    bool m_isFullTold = false;
};

} // namespace agent

#endif
