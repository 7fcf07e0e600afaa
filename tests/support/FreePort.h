// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_FREEPORT_H
#define VIGIL_SUPPORT_FREEPORT_H

#include <QAbstractSocket>
#include <QHostAddress>
#include <QNetworkProxy>

namespace support {

/// Binds a socket to a free port of 127.0.0.1.
///
/// Tests never call `socket.bind(QHostAddress::LocalHost)`: the enumerator converts to an integer, so the
/// call means port 2 of every address. Nor do they ask a proxy that the environment may name.
inline bool bindToFreePort(QAbstractSocket& socket)
{
    socket.setProxy(QNetworkProxy::NoProxy);
    return socket.bind(QHostAddress(QHostAddress::LocalHost), 0, QAbstractSocket::DontShareAddress);
}

} // namespace support

#endif
