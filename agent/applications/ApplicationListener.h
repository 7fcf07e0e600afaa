// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONLISTENER_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONLISTENER_H

#include <QHostAddress>
#include <QObject>
#include <QTcpServer>

#include <set>

#include "agent/applications/ApplicationList.h"
#include "agent/applications/Identity.h"
#include "agent/applications/Limits.h"
#include "agent/core/Clock.h"
#include "agent/core/Error.h"

namespace agent {

/// Accepts connections of applications, of the users and up to the numbers that the limits allow.
///
/// Ownership: all that it is given must outlive it.
/// Failure: a connection it refuses is closed, counted and logged. Without descriptors left it tries again
/// every second.
class ApplicationListener : public QObject
{
    Q_OBJECT

public:
    ApplicationListener(const ApplicationList& applications, Clock& clock, const Limits& limits,
                        Identify identify);

    Error listen(const QHostAddress& host, quint16 port);

    /// The same with a socket that listens already. The listener owns it.
    Error listen(int descriptor);

    /// The host and port it listens on.
    QString address() const;

    /// Connections refused for want of room, or because of their user.
    quint64 refused() const { return m_refused; }

    /// An application has disconnected: refusals for want of room are logged again.
    void handleDisconnected() { m_isFullLogged = false; }

signals:
    /// The receiver owns the socket.
    void accepted(QTcpSocket* socket, const agent::Identity& identity);

private:
    void acceptAll();
    void acceptLater(const QString& reason);
    bool isAllowed(const Identity& identity);
    bool isFull() const;
    size_t mostFor(const User& user) const;
    bool isShareUsed(const User& user) const;
    bool makeRoomFor(const User& user);
    void turnAway(QTcpSocket* socket, const Identity& identity);

    QTcpServer m_server;
    const ApplicationList& m_applications;
    Clock& m_clock;
    const Limits& m_limits;
    const Identify m_identify;
    quint64 m_refused = 0;
    bool m_isFullLogged = false;
    std::set<User> m_refusedUsers; // those in the log
    qint64 m_nextDescriptorWarningMs = 0;
    bool m_isAcceptingLater = false;
};

} // namespace agent

#endif
