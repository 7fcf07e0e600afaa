// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_FREEPORT_H
#define VIGIL_SUPPORT_FREEPORT_H

#include <QAbstractSocket>
#include <QHostAddress>

namespace support {

/// Binds a socket to a free port of 127.0.0.1.
///
/// Tests never call `socket.bind(QHostAddress::LocalHost)`: the enumerator converts to an integer, so the
/// call means port 2 of every address.
inline bool bindToFreePort(QAbstractSocket& socket)
{
    return socket.bind(QHostAddress(QHostAddress::LocalHost), 0, QAbstractSocket::DontShareAddress);
}

} // namespace support

#endif
