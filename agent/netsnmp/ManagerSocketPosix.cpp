// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ManagerSocket.h"

#include <sys/socket.h>
#include <unistd.h>

namespace agent::managerSocket {

std::vector<int> listOf(netsnmp_large_fd_set& set, int count)
{
    std::vector<int> sockets;
    for (int socket = 0; socket < count; ++socket) {
        if (netsnmp_large_fd_is_set(socket, &set))
            sockets.push_back(socket);
    }
    return sockets;
}

QHostAddress peerOf(int socket)
{
    sockaddr_storage address = {};
    socklen_t size = sizeof(address);
    if (getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return {};
    return QHostAddress(reinterpret_cast<const sockaddr*>(&address));
}

void close(int socket)
{
    ::close(socket);
}

bool prepare(netsnmp_transport&)
{
    return true;
}

QString reasonFor(const QString&)
{
    return {};
}

} // namespace agent::managerSocket
