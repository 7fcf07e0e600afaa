// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_HOSTANDPORT_H
#define VIGIL_AGENT_CORE_HOSTANDPORT_H

#include <QHostAddress>
#include <QString>

namespace agent {

/// "127.0.0.1:161" or "[::1]:161". Without brackets the port would look like a part of an IPv6 address.
inline QString hostAndPort(const QHostAddress& host, quint16 port)
{
    const bool isIPv6 = host.protocol() == QAbstractSocket::IPv6Protocol;
    return (isIPv6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(host.toString(), QString::number(port));
}

} // namespace agent

#endif
