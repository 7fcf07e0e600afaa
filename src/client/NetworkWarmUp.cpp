// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/NetworkWarmUp.h"

#include <QHostAddress>
#include <QTcpServer>

#include "base/QuietSocket.h"

namespace {
constexpr int stepTimeoutMs = 500; // ample on the loopback interface
}

void warmUpNetwork()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost))
        return;
    base::QuietSocket socket;
    socket.connectToHost(server.serverAddress().toString(), server.serverPort());
    if (!socket.waitForConnected(stepTimeoutMs))
        return;
    socket.write("x");
    socket.waitForBytesWritten(stepTimeoutMs);
    socket.abort();
}
