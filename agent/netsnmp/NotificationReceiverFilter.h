// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_NOTIFICATIONRECEIVERFILTER_H
#define VIGIL_AGENT_NETSNMP_NOTIFICATIONRECEIVERFILTER_H

#include <vector>

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Drops notification receivers that could block the agent. While it lives, it collects the receivers from
/// the configuration; its destructor registers all others.
///
/// Before Net-SNMP sends an SNMPv3 inform, it asks the receiver for its engine id and waits for the reply:
/// seconds for each inform if the receiver is down. A receiver of such informs therefore needs its engine id
/// in the configuration.
///
/// Ownership: the sessions belong to Net-SNMP. One object at a time.
/// Failure: the log names each dropped receiver.
class NotificationReceiverFilter
{
public:
    NotificationReceiverFilter();
    ~NotificationReceiverFilter();

    NotificationReceiverFilter(const NotificationReceiverFilter&) = delete;
    NotificationReceiverFilter& operator=(const NotificationReceiverFilter&) = delete;

private:
    struct Receiver
    {
        netsnmp_session* session;
        bool wantsInforms;
    };

    static int collect(int major, int minor, void* arguments, void* self);
    static void addOrDrop(const Receiver& receiver);

    std::vector<Receiver> m_receivers;
};

} // namespace agent

#endif
