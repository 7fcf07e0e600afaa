// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/Publisher.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include <QByteArray>

#include "base/wire/FrameHeader.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpString.h"

namespace {

QByteArray frameOf(int number)
{
    base::SnmpString record;
    record.oid = Publisher::cell(number);
    record.value = Publisher::text(number);
    QByteArray payload;
    record.serialize(payload);
    base::FrameHeader header;
    header.dataType = base::SnmpStringType;
    header.clientCallbackId = base::PlainValue;
    header.messageCounter = static_cast<quint64>(number) + 1;
    return header.toBytes(payload.size()) + payload;
}

} // namespace

Publisher::Publisher(std::uint16_t agentPort, int cells)
    : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(agentPort);
    QByteArray frames;
    for (int number = 0; number < cells; ++number)
        frames += frameOf(number);
    const auto size = static_cast<size_t>(frames.size());
    if (connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
        send(m_socket, frames.constData(), size, 0) == frames.size())
        return;
    std::perror("cannot publish");
    std::exit(1);
}

Publisher::~Publisher()
{
    close(m_socket);
}

/// The value of the metric with a name of four bytes, of the check "a"."b".
std::string Publisher::cell(int number)
{
    constexpr int base = 100;
    std::string index = "127.3.1.200.4.4.1.2.1.97.1.98.4.109";
    for (const int digit : {number / base / base, number / base % base, number % base})
        index += '.' + std::to_string(1 + digit);
    return index;
}
