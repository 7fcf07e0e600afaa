// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_SERVICETRUST_H
#define VIGIL_CLIENT_SERVICETRUST_H

#include <QElapsedTimer>

#include "platform/peer/Peer.h"

class QTcpSocket;

/// Decides whether the peer may be the service. While the service is away, any user can listen on its port,
/// and would then give this process orders.
///
/// Trusted are root, the user of this process, the user "vigil-agent" and the one in VIGIL_SERVICE_USER, a
/// name or a number. If the system cannot tell the user, or a library must not ask, the peer is trusted, but
/// not if only a descriptor was missing. A set-user-id program ignores the variable.
///
/// Threads: one.
/// Failure: a bad value of the variable is logged, and adds no one.
class ServiceTrust
{
public:
    /// Reads the variable.
    ServiceTrust();

    /// Logs a refusal, at most once a minute.
    bool isTrusted(const QTcpSocket& socket);

private:
    bool mayServe(const platform::User& user) const;
    void report(const QTcpSocket& socket, const platform::User& user);

    platform::User m_addedUser;
    QElapsedTimer m_lastReport;
};

#endif
