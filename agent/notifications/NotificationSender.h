// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONSENDER_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONSENDER_H

#include <QtGlobal>

#include "agent/notifications/Notification.h"

namespace agent {

/// Hands notifications to Net-SNMP. Standalone, Net-SNMP sends them as traps or informs to the receivers in
/// its configuration. As a subagent, it sends them to the master, which has its own receivers.
///
/// Failure: a notification is lost, and not counted, if there is no receiver or Net-SNMP cannot send it. The
/// agent does not wait for responses to informs.
class NotificationSender
{
public:
    void send(const Notification& notification);

    /// Counts notifications with at least one receiver.
    quint64 sent() const { return m_sent; }

private:
    quint64 m_sent = 0;
};

} // namespace agent

#endif
