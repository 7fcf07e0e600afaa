// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/PassedSocket.h"

#include <QByteArray>
#include <QHostAddress>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace agent {

namespace {

constexpr int firstPassed = 3; // of the service manager's protocol

int optionOf(int descriptor, int option)
{
    int value = 0;
    socklen_t size = sizeof value;
    return getsockopt(descriptor, SOL_SOCKET, option, &value, &size) == 0 ? value : -1;
}

bool isLoopback(int descriptor)
{
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0 ||
        (address.ss_family != AF_INET && address.ss_family != AF_INET6))
        return false;
    return QHostAddress(reinterpret_cast<const sockaddr*>(&address)).isLoopback();
}

bool isUsable(int descriptor)
{
    return optionOf(descriptor, SO_PROTOCOL) == IPPROTO_TCP && optionOf(descriptor, SO_ACCEPTCONN) == 1 &&
           isLoopback(descriptor);
}

} // namespace

Error takePassedSocket(int& descriptor)
{
    descriptor = noSocket;
    const bool isForThisProcess = qgetenv("LISTEN_PID") == QByteArray::number(getpid());
    const QByteArray count = qgetenv("LISTEN_FDS");
    for (const char* variable : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"})
        qunsetenv(variable);
    if (!isForThisProcess || count.isEmpty() || count == "0")
        return {};
    if (count != "1")
        return Error(QStringLiteral("the service manager passes %1 sockets, the agent takes one; correct the "
                                    "socket unit")
                         .arg(QString::fromLatin1(count)));
    if (!isUsable(firstPassed))
        return Error(QStringLiteral("the service manager passes a socket that does not listen for TCP on a "
                                    "loopback address; correct the socket unit"));
    fcntl(firstPassed, F_SETFD, FD_CLOEXEC);
    descriptor = firstPassed;
    return {};
}

} // namespace agent
