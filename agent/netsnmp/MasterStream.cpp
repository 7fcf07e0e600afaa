// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/MasterStream.h"

#include <QElapsedTimer>

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

namespace agent {

namespace {

constexpr int sendTimeoutMs = 500;

bool waitUntilWritable(int descriptor, const QElapsedTimer& waited)
{
    const qint64 left = sendTimeoutMs - waited.elapsed();
    pollfd watched = {descriptor, POLLOUT, 0};
    return left > 0 && poll(&watched, 1, static_cast<int>(left)) > 0;
}

int sendOrShutDown(netsnmp_transport* transport, const void* data, int size, void**, int*)
{
    QElapsedTimer waited;
    waited.start();
    int sent = 0;
    while (sent < size) {
        const ssize_t step = send(transport->sock, static_cast<const char*>(data) + sent,
                                  static_cast<size_t>(size - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (step >= 0) {
            sent += static_cast<int>(step);
        } else if (errno != EINTR && (errno != EAGAIN || !waitUntilWritable(transport->sock, waited))) {
            shutDownStream(*transport); // no other message can follow half of one
            return -1;
        }
    }
    return size;
}

/// Reports no sender's address: a stream has none.
int receive(netsnmp_transport* transport, void* data, int size, void** address, int* addressLength)
{
    *address = nullptr;
    *addressLength = 0;
    ssize_t received = -1;
    do {
        received = recv(transport->sock, data, static_cast<size_t>(size), MSG_DONTWAIT);
    } while (received < 0 && errno == EINTR);
    return static_cast<int>(received);
}

} // namespace

void takeOverStream(netsnmp_transport& transport)
{
    transport.f_send = &sendOrShutDown;
    transport.f_recv = &receive;
}

void shutDownStream(const netsnmp_transport& transport)
{
    shutdown(transport.sock, SHUT_RDWR);
}

} // namespace agent
