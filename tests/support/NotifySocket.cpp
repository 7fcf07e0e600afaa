// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "NotifySocket.h"

#include <QFile>

#include <algorithm>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "RunUntil.h"

namespace support {

NotifySocket::NotifySocket()
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = QFile::encodeName(path());
    if (name.size() >= static_cast<int>(sizeof address.sun_path))
        return;
    std::copy(name.begin(), name.end(), address.sun_path);
    m_descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { received(); });
}

NotifySocket::~NotifySocket()
{
    m_notifier.reset(); // while the descriptor is open
    close(m_descriptor);
}

const QByteArray& NotifySocket::received()
{
    char message[4096];
    ssize_t size = 0;
    while ((size = recv(m_descriptor, message, sizeof message, 0)) > 0)
        m_received += QByteArray(message, static_cast<int>(size)).trimmed() + '\n';
    return m_received;
}

bool NotifySocket::waitFor(const QByteArray& line, int times)
{
    return runUntil([&] { return received().count(line + '\n') >= times; });
}

} // namespace support
