// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/MasterStream.h"

#include <QElapsedTimer>

#include <cerrno>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>

#include "agent/netsnmp/AgentxLimit.h"

namespace agent {

namespace {

constexpr int sendTimeoutMs = 500;

// There is one stream at a time.
AgentxLimit limitOfStream;
bool (*isStreamBusy)() = nullptr;

bool waitUntilWritable(int descriptor, const QElapsedTimer& waited)
{
    const qint64 left = sendTimeoutMs - waited.elapsed();
    pollfd watched = {descriptor, POLLOUT, 0};
    return left > 0 && poll(&watched, 1, static_cast<int>(left)) > 0;
}

bool sendOrShutDown(const netsnmp_transport& transport, const QByteArray& bytes)
{
    QElapsedTimer waited;
    waited.start();
    int sent = 0;
    while (sent < bytes.size()) {
        const ssize_t step = send(transport.sock, bytes.constData() + sent,
                                  static_cast<size_t>(bytes.size() - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (step >= 0) {
            sent += static_cast<int>(step);
        } else if (errno != EINTR && (errno != EAGAIN || !waitUntilWritable(transport.sock, waited))) {
            shutDownStream(transport); // no other message can follow half of one
            return false;
        }
    }
    return true;
}

int sendMessage(netsnmp_transport* transport, const void* data, int size, void**, int*)
{
    const QByteArray message = QByteArray::fromRawData(static_cast<const char*>(data), size);
    return sendOrShutDown(*transport, AgentxLimit::limited(message)) ? size : -1;
}

/// Net-SNMP would take it for the end.
int receivedNothing(netsnmp_transport& transport)
{
    transport.flags |= NETSNMP_TRANSPORT_FLAG_EMPTY_PKT;
    return 0;
}

/// Reports no sender's address: a stream has none.
int receive(netsnmp_transport* transport, void* data, int size, void** address, int* addressLength)
{
    *address = nullptr;
    *addressLength = 0;
    const auto most = static_cast<size_t>(size - AgentxLimit::maxHeldBack);
    ssize_t received = -1;
    do {
        received = recv(transport->sock, data, most, MSG_DONTWAIT);
    } while (received < 0 && errno == EINTR);
    if (received <= 0)
        return isStreamBusy() ? receivedNothing(*transport) : static_cast<int>(received);
    const QByteArray accepted = limitOfStream.receive(
        QByteArray::fromRawData(static_cast<const char*>(data), static_cast<int>(received)));
    if (limitOfStream.isBroken())
        shutDownStream(*transport);
    sendOrShutDown(*transport, limitOfStream.takeAnswers());
    if (accepted.isEmpty())
        return receivedNothing(*transport);
    std::memmove(data, accepted.constData(), static_cast<size_t>(accepted.size()));
    return accepted.size();
}

} // namespace

void takeOverStream(netsnmp_transport& transport, bool (*isBusy)())
{
    limitOfStream = AgentxLimit();
    isStreamBusy = isBusy;
    transport.f_send = &sendMessage;
    transport.f_recv = &receive;
}

void shutDownStream(const netsnmp_transport& transport)
{
    shutdown(transport.sock, SHUT_RDWR);
}

} // namespace agent
