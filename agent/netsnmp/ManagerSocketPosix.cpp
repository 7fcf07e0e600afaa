// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ManagerSocket.h"

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace agent::managerSocket {

namespace {

bool waitUntilWritable(int socket)
{
    pollfd watched = {socket, POLLOUT, 0};
    for (int waitedMs = 0; waitedMs < longestStandstillMs; waitedMs += standstillStepMs) {
        if (poll(&watched, 1, standstillStepMs) > 0)
            return true;
    }
    return false;
}

/// Net-SNMP's own sender blocks the agent until the manager reads.
int sendWhole(netsnmp_transport* transport, const void* data, int size, void**, int*)
{
    int sent = 0;
    while (sent < size) {
        const ssize_t step = send(transport->sock, static_cast<const char*>(data) + sent,
                                  static_cast<size_t>(size - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (step > 0) {
            sent += static_cast<int>(step);
        } else if ((errno != EAGAIN && errno != EINTR) || !waitUntilWritable(transport->sock)) {
            shutdown(transport->sock, SHUT_RDWR); // no other answer can follow a part of one
            return -1;
        }
    }
    return size;
}

} // namespace

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

bool prepare(netsnmp_transport& listener)
{
    if (listener.flags & NETSNMP_TRANSPORT_FLAG_STREAM)
        listener.f_send = &sendWhole; // connections inherit it
    return true;
}

QString reasonFor(const QString&)
{
    return {};
}

} // namespace agent::managerSocket
