// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CONTROL_CONTROLSERVER_H
#define VIGIL_AGENT_CONTROL_CONTROLSERVER_H

#include <QLocalServer>
#include <QObject>
#include <QTimer>

#include <deque>

#include "agent/control/ControlConnection.h"
#include "agent/control/ControlReply.h"
#include "agent/core/Clock.h"
#include "agent/core/Error.h"
#include "agent/core/Turn.h"

namespace agent {

/// Lets this host's operators ask the agent for changes, through a local socket.
///
/// Only root and the agent's own user may ask; the kernel tells who a peer is. Connections, the length of a
/// request and all times are limited. A peer beyond the connections is told so in reply to its request. Long
/// replies are made in pieces, so managers never wait for a reader.
///
/// Agents take turns at making and removing the socket, by a lock file beside it. Without turns, one could
/// take the other's new socket for one that an ended agent has left.
///
/// Ownership: the clock must outlive it.
/// Failure: listen() returns why it cannot serve. Later errors end only the connection they came from.
class ControlServer : public QObject
{
    Q_OBJECT

public:
    static constexpr size_t maxConnections = 8;
    static constexpr size_t maxRefused = 8; ///< told why at the same time; more are closed at once

    using UserOf = std::function<User(std::intptr_t socket)>; ///< tests have their own

    ControlServer(Clock& clock, ControlHandler handler, UserOf userOf = &platform::localPeerUser);

    /// Removes the socket.
    ~ControlServer() override;

    /// Makes the socket at this path. Replaces one left there by an ended agent, and nothing else.
    Error listen(const QString& path);

    /// Empty before.
    QString path() const { return m_server.fullServerName(); }

private:
    void acceptAll();
    void accept(QLocalSocket* socket, const User& user);
    void refuse(QLocalSocket* socket, const User& user);
    void run();

    Clock& m_clock;
    const ControlHandler m_handler;
    const ControlHandler m_refusal;
    const UserOf m_userOf;
    QLocalServer m_server;
    std::deque<ControlConnection*> m_connections;
    size_t m_refused = 0;
    Turn m_turn;
    QTimer m_runs;
};

} // namespace agent

#endif
