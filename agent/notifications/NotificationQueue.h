// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONQUEUE_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONQUEUE_H

#include <QObject>

#include <functional>
#include <list>
#include <map>

#include "agent/cells/Cell.h"
#include "agent/core/Clock.h"
#include "agent/notifications/HealthChange.h"
#include "agent/notifications/Notification.h"

namespace agent {

/// Limits the rate of notifications, and the memory they take.
///
/// Net-SNMP keeps every inform until its response or a time-out of some seconds, and has no limit itself.
/// The queue therefore lets 2 MB of notifications through a second, about 200 of them. Changes of health wait
/// for their turn, in bounded memory, and while there is no one to send them to. CRITICAL goes first, but
/// in a flood every tenth is another one. The applications take turns, so one that flaps does not delay the
/// others. A further change of a waiting check replaces the first; if the two cancel out, neither is sent.
///
/// Values never wait: a flood of values from one application must not delay the health of the others.
///
/// Ownership: the clock must outlive the queue.
/// Failure: anything beyond the memory is dropped, with at most one warning a minute. The application with
/// the most changes in the queue loses first.
class NotificationQueue : public QObject
{
    Q_OBJECT

public:
    using Send = std::function<void(const Notification& notification)>;
    using IsReady = std::function<bool()>;

    /// send is called from the event loop, and from inside the functions below.
    NotificationQueue(Clock& clock, size_t maxMemory, Send send);

    /// Nothing is sent while isReady() is false.
    void setReady(IsReady isReady) { m_isReady = std::move(isReady); }

    /// application owns the check.
    void sendInTurn(HealthChange change, ApplicationId application);
    void sendNowOrDrop(const Notification& notification);

    size_t dropped() const { return m_dropped; }

    /// The memory of what waits, in bytes: more than it takes, since a notification on its way takes more.
    size_t memory() const { return m_waitingSize; }

    /// Managers do not know the waiting changes yet: replaces these statuses by the known ones.
    void correct(std::map<ObjectId, int>& notified) const;

private:
    using Order = std::list<ObjectId>; // checks

    /// The waiting changes of one application.
    struct Turn
    {
        Order critical;
        Order others;
        size_t size = 0;
    };

    /// One kind of changes, of all applications.
    struct Line
    {
        Order Turn::*order;
        ApplicationId lastTurn = 0;
    };

    struct Waiting
    {
        HealthChange change;
        ApplicationId application;
        size_t size;
        Order::iterator place;
    };

    Order& orderOf(const Waiting& waiting);
    void add(HealthChange change, ApplicationId application);
    HealthChange take(std::map<ObjectId, Waiting>::iterator entry);
    void makeRoom();
    HealthChange takeNext();
    ObjectId nextOf(const Line& line) const;

    bool canSend();
    bool hasCredit();
    void send(const Notification& notification);
    void drop();
    void warnOfDropped();
    void drainLater();
    void drain();

    Clock& m_clock;
    const size_t m_maxMemory;
    const Send m_send;
    IsReady m_isReady = [] { return true; };
    std::map<ObjectId, Waiting> m_waiting; // by check
    std::map<ApplicationId, Turn> m_turns;
    Line m_critical{&Turn::critical};
    Line m_others{&Turn::others};
    int m_criticalInRow = 0; // sent since one of the others
    size_t m_waitingSize = 0;
    bool m_isDraining = false;
    qint64 m_credit; // in bytes; negative after the last one sent on it
    qint64 m_creditedMs;
    size_t m_dropped = 0;
    size_t m_droppedSinceWarning = 0;
    qint64 m_nextWarningMs = 0;
};

} // namespace agent

#endif
