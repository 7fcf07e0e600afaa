// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/Publisher.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <sstream>

#include <QByteArray>

#include "base/wire/FrameHeader.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpString.h"

namespace {

QByteArray frameOf(int number, std::uint64_t counter)
{
    base::SnmpString record;
    record.oid = Publisher::cell(number);
    record.value = Publisher::text(number);
    QByteArray payload;
    record.serialize(payload);
    base::FrameHeader header;
    header.dataType = base::SnmpStringType;
    header.clientCallbackId = base::PlainValue;
    header.messageCounter = counter;
    return header.toBytes(payload.size()) + payload;
}

[[noreturn]] void fail()
{
    std::perror("cannot publish");
    std::exit(1);
}

} // namespace

Publisher::Publisher(std::uint16_t agentPort, int cells, int first)
    : m_first(first), m_cells(cells), m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(agentPort);
    if (connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0)
        fail();
    publish();
}

Publisher::~Publisher()
{
    close(m_socket);
}

void Publisher::publish()
{
    QByteArray frames;
    for (int number = m_first; number < m_first + m_cells; ++number)
        frames += frameOf(number, ++m_frames);
    if (send(m_socket, frames.constData(), static_cast<size_t>(frames.size()), 0) != frames.size())
        fail();
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

vigil::Oid Publisher::oid(int number)
{
    std::istringstream text(enterprise() + cell(number));
    std::list<unsigned int> arcs;
    for (std::string arc; std::getline(text, arc, '.');)
        arcs.push_back(static_cast<unsigned int>(std::stoul(arc)));
    return vigil::Oid(arcs);
}
