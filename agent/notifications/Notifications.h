// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONS_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONS_H

#include <optional>

#include "agent/applications/ApplicationServer.h"
#include "agent/cells/ServedCells.h"
#include "agent/core/Clock.h"
#include "agent/notifications/NotificationPolicy.h"
#include "agent/notifications/NotificationQueue.h"
#include "agent/notifications/NotificationSender.h"

namespace agent {

/// Tells managers what applications and the agent itself do to health checks, and of values that applications
/// want them to know.
///
/// Purpose: the road of a notification: the policy decides whether and when, the queue bounds how many, the
/// sender hands them to Net-SNMP.
///
/// Threads: the agent has one. Ownership: cells, applications and clock must outlive it. Failure: see
/// NotificationQueue and NotificationSender.
class Notifications
{
public:
    Notifications(ServedCells& cells, ApplicationServer& applications, Clock& clock);

    /// Those that at least one receiver has been sent.
    quint64 sent() const { return m_sender.sent(); }

private:
    std::optional<NotificationPolicy::Served> served(const ObjectId& check) const;
    void notifyOfValue(const ObjectId& cell);

    const ServedCells& m_cells;
    NotificationSender m_sender;
    NotificationQueue m_queue;
    NotificationPolicy m_policy;
};

} // namespace agent

#endif
