// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONS_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONS_H

#include <QObject>

#include <optional>

#include "agent/cells/ServedCells.h"
#include "agent/core/Clock.h"
#include "agent/notifications/NotificationPolicy.h"
#include "agent/notifications/NotificationQueue.h"
#include "agent/notifications/NotificationSender.h"

namespace agent {

/// Notifies managers of changes of health checks, and of values when their application requests it.
///
/// The policy decides whether and when, the queue limits the rate, the sender hands over to Net-SNMP.
///
/// Ownership: cells, mutes and clock must outlive it.
/// Failure: a notification can be dropped (NotificationQueue) or lost (NotificationSender).
class Notifications : public QObject
{
    Q_OBJECT

public:
    /// maxMemory limits the waiting notifications.
    Notifications(const ServedCells& cells, const Mutes& mutes, Clock& clock, size_t maxMemory);

    /// Sends the cell's value to managers, as its application has requested.
    void notifyOfValue(const ObjectId& cell);

    /// Changes of health wait while isReady() is false.
    void setReady(NotificationQueue::IsReady isReady) { m_queue.setReady(std::move(isReady)); }

    /// Counts notifications dropped for want of room or, if about values, of a master.
    quint64 dropped() const { return m_queue.dropped(); }

    /// The memory of waiting notifications.
    size_t memory() const { return m_queue.memory(); }

    /// Counts notifications with at least one receiver.
    quint64 sent() const { return m_sender.sent(); }

    /// See NotificationPolicy.
    std::map<ObjectId, int> notified() const;
    void restore(std::map<ObjectId, int> notified, qint64 forMs)
    {
        m_policy.restore(std::move(notified), forMs);
    }
    std::vector<LostCheck> forgotten() const { return m_policy.forgotten(); }
    void restoreForgotten(const std::vector<LostCheck>& forgotten) { m_policy.restoreForgotten(forgotten); }

signals:
    /// A change of a health check is on its way to managers.
    void healthChanged();

private:
    std::optional<NotificationPolicy::Served> served(const ObjectId& check) const;

    const ServedCells& m_cells;
    NotificationSender m_sender;
    NotificationQueue m_queue;
    NotificationPolicy m_policy;
};

} // namespace agent

#endif
