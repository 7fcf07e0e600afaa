// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONQUEUE_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONQUEUE_H

#include <QObject>

#include <deque>
#include <functional>

#include "agent/core/Clock.h"
#include "agent/notifications/Notification.h"

namespace agent {

/// Keeps applications from flooding the receivers, and the agent from holding too much for them.
///
/// Purpose: Net-SNMP keeps an inform until it is answered or given up after some seconds, however many there
/// are. So no more than 2 MB of notifications go out in a second, which is about 300 of them. Changes of
/// health wait for their turn and go first; values do not wait, since the application that floods the agent
/// with them must not delay the others' health.
///
/// Threads: the agent has one. send is called from the event loop or from inside the functions here.
/// Ownership: the clock must outlive the queue.
/// Failure: what does not fit is dropped, with a warning once a minute at most.
class NotificationQueue : public QObject
{
    Q_OBJECT

public:
    using Send = std::function<void(const Notification& notification)>;

    NotificationQueue(Clock& clock, Send send);

    /// At once or in its turn.
    void add(Notification notification);

    /// At once or not at all.
    void addUnlessBusy(const Notification& notification);

    size_t dropped() const { return m_dropped; }

private:
    bool mayGoNow();
    void send(const Notification& notification);
    void drop();
    void warn();
    void drainLater();
    void drain();

    Clock& m_clock;
    const Send m_send;
    std::deque<Notification> m_waiting;
    size_t m_waitingSize = 0;
    qint64 m_credit;
    qint64 m_creditedMs;
    size_t m_dropped = 0;
    size_t m_droppedUntold = 0;
    qint64 m_nextWarningMs = 0;
};

} // namespace agent

#endif
