// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/ReplyTimer.h"

#include <QCoreApplication>

#include <array>

#include "agent/netsnmp/NetSnmp.h"
#include "support/LoadFreeTimer.h"
#include "support/RunUntil.h"

namespace support {

namespace {

constexpr std::array<oid, 9> sysUpTime = {1, 3, 6, 1, 2, 1, 1, 3, 0};

int noteReply(int operation, netsnmp_session*, int, netsnmp_pdu*, void* isReplied)
{
    if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE)
        *static_cast<bool*>(isReplied) = true;
    return 1;
}

} // namespace

ReplyTimer::ReplyTimer(const QString& address, const QString& community, qint64 processId)
    : m_processId(processId)
{
    QByteArray peer = address.toUtf8();
    QByteArray name = community.toUtf8();
    netsnmp_session session{};
    snmp_sess_init(&session);
    session.version = SNMP_VERSION_2c;
    session.retries = 0;
    session.peername = peer.data();
    session.community = reinterpret_cast<u_char*>(name.data());
    session.community_len = static_cast<size_t>(name.size());
    m_session = snmp_sess_open(&session);
}

ReplyTimer::~ReplyTimer()
{
    snmp_sess_close(m_session);
}

std::optional<qint64> ReplyTimer::measureMs()
{
    m_isReplied = false;
    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GET);
    snmp_add_null_var(request, sysUpTime.data(), sysUpTime.size());
    QCoreApplication::processEvents(); // sends what the applications have queued
    const LoadFreeTimer timer({m_processId});
    if (snmp_sess_async_send(m_session, request, &noteReply, &m_isReplied) == 0) {
        snmp_free_pdu(request);
        return {};
    }
    if (!runUntil([this] {
            readReply();
            return m_isReplied;
        }))
        return {};
    return timer.elapsedMs();
}

void ReplyTimer::readReply()
{
    netsnmp_large_fd_set readable;
    netsnmp_large_fd_set_init(&readable, FD_SETSIZE);
    NETSNMP_LARGE_FD_ZERO(&readable);
    int count = 0;
    int block = 0;
    timeval noWait{};
    snmp_sess_select_info2(m_session, &count, &readable, &noWait, &block);
    noWait = {};
    if (netsnmp_large_fd_set_select(count, &readable, nullptr, nullptr, &noWait) > 0)
        snmp_sess_read2(m_session, &readable);
    netsnmp_large_fd_set_cleanup(&readable);
}

} // namespace support
