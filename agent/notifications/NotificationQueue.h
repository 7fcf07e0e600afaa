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

/// Limits the rate of notifications, and the memory they take.
///
/// Net-SNMP keeps every inform until its response or a time-out of some seconds, and has no limit itself.
/// The queue therefore lets 2 MB of notifications through a second, about 300 of them. Changes of health wait
/// for their turn, in 60 MB at most, and go first. Values never wait: a flood of values from one application
/// must not delay the health of the others.
///
/// Ownership: the clock must outlive the queue.
/// Failure: what does not fit is dropped, with at most one warning a minute.
class NotificationQueue : public QObject
{
    Q_OBJECT

public:
    using Send = std::function<void(const Notification& notification)>;

    /// send is called from the event loop, and from inside the functions below.
    NotificationQueue(Clock& clock, Send send);

    void sendInTurn(Notification notification);
    void sendNowOrDrop(const Notification& notification);

    size_t dropped() const { return m_dropped; }

private:
    bool hasCredit();
    void send(const Notification& notification);
    void drop();
    void warnOfDropped();
    void drainLater();
    void drain();

    Clock& m_clock;
    const Send m_send;
    std::deque<Notification> m_waiting;
    size_t m_waitingSize = 0;
    qint64 m_credit; // in bytes; negative after the last one sent on it
    qint64 m_creditedMs;
    size_t m_dropped = 0;
    size_t m_droppedSinceWarning = 0;
    qint64 m_nextWarningMs = 0;
};

} // namespace agent

#endif
