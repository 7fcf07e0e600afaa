// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONSENDER_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONSENDER_H

#include <QtGlobal>

#include "agent/notifications/Notification.h"

namespace agent {

/// Hands notifications to Net-SNMP, which sends them to whatever receivers its configuration names, as traps
/// or informs; behind a master agent, to the master, which has its own.
///
/// Threads: the agent has one, which is Net-SNMP's too.
/// Failure: a notification without a receiver, or that Net-SNMP cannot send, is lost and does not count.
/// Nobody waits for the answer to an inform.
class NotificationSender
{
public:
    void send(const Notification& notification);

    /// Those that at least one receiver has been sent.
    quint64 sent() const { return m_sent; }

private:
    quint64 m_sent = 0;
};

} // namespace agent

#endif
