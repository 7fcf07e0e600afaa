// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/NotificationReceiverFilter.h"

#include <net-snmp/agent/agent_callbacks.h>

#include "agent/core/Log.h"

namespace agent {

NotificationReceiverFilter::NotificationReceiverFilter()
{
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_REGISTER_NOTIFICATIONS,
                           &NotificationReceiverFilter::collect, this);
}

NotificationReceiverFilter::~NotificationReceiverFilter()
{
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_REGISTER_NOTIFICATIONS,
                             &NotificationReceiverFilter::collect, this, 1);
    for (const Receiver& receiver : m_receivers)
        addOrDrop(receiver);
}

int NotificationReceiverFilter::collect(int, int, void* arguments, void* self)
{
    const auto* receiver = static_cast<const agent_add_trap_args*>(arguments);
    static_cast<NotificationReceiverFilter*>(self)->m_receivers.push_back(
        {receiver->ss, receiver->confirm != 0});
    return SNMPERR_SUCCESS;
}

void NotificationReceiverFilter::addOrDrop(const Receiver& receiver)
{
    netsnmp_session* session = receiver.session;
    if (receiver.wantsInforms && session->version == SNMP_VERSION_3 && session->securityEngineIDLen == 0) {
        log::error(
            QStringLiteral("no notifications for %1: informs over SNMPv3 need the receiver's engine id; "
                           "add it to the trapsess line with -e, or send traps (without -Ci)")
                .arg(QString::fromLocal8Bit(session->peername)));
        snmp_close(session);
        return;
    }
    const auto trap = session->version == SNMP_VERSION_1 ? SNMP_MSG_TRAP : SNMP_MSG_TRAP2;
    const auto type = receiver.wantsInforms ? SNMP_MSG_INFORM : trap;
    add_trap_session(session, static_cast<int>(type), receiver.wantsInforms,
                     static_cast<int>(session->version));
}

} // namespace agent
