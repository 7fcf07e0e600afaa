// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_SETCOORDINATOR_H
#define VIGIL_AGENT_SERVING_SETCOORDINATOR_H

#include <QObject>

#include <map>
#include <vector>

#include "agent/cells/CellOwners.h"
#include "agent/cells/CellStore.h"
#include "agent/core/Clock.h"
#include "agent/core/DeadlineQueue.h"
#include "agent/core/DelayQueue.h"
#include "agent/serving/SetTransaction.h"

namespace agent {

/// Asks the applications before a manager's SET takes effect.
///
/// The order of calls: check() for each varbind, begin() for all of them, then the signal decided(),
/// isStillValid() and commit(). drop() ends a SET at any point. SetTransaction.h has the states of one SET.
/// An answer must carry the number of an open question; a late answer is dropped.
///
/// decided() is emitted from the event loop, never from inside begin().
///
/// While a SET waits for an application, the master holds back all other requests. After a time-out the
/// application is unresponsive: SETs of its cells fail at once until it answers, or for 5 seconds. Then the
/// next SET asks it again.
///
/// Ownership: store, owners and clock must outlive the coordinator.
/// Failure: results are SNMP error statuses, 0 for none. If an application is lost or does not answer in
/// time, the SET fails with resourceUnavailable.
class SetCoordinator : public QObject
{
    Q_OBJECT

public:
    using Key = quint64;

    /// SETs since the start.
    struct Counts
    {
        quint64 forwarded = 0;    ///< to applications
        quint64 refused = 0;      ///< of these, by an application
        quint64 timedOut = 0;     ///< of these, for want of an answer
        quint64 failedAtOnce = 0; ///< not forwarded, since an application is unresponsive
    };

    SetCoordinator(CellStore& store, CellOwners& owners, Clock& clock, int timeoutMs);

    /// Checks what the agent itself knows: whether the cell exists and is writable, its owner is connected,
    /// and the value fits.
    int check(const SetVarbind& varbind) const;

    /// True if the owner of the cell is unresponsive, so that check() refuses.
    bool isUnresponsive(const ObjectId& cell) const;
    void countFailedAtOnce() { ++m_counts.failedAtOnce; }

    /// Asks the owners of the cells. decided() follows unless drop() comes first.
    Key begin(std::vector<SetVarbind> varbinds);

    /// False if a cell has gone or has changed hands since its owner was asked, or its owner is lost.
    bool isStillValid(Key key) const;

    /// Gives the cells of an accepted SET their new values, and tells their owners. False if nothing has
    /// changed, because the SET is not accepted or no longer valid.
    bool commit(Key key);

    void drop(Key key);

    const Counts& counts() const { return m_counts; }

    void handleAnswer(ApplicationId owner, int number, int errorStatus);
    void handleLost(ApplicationId owner);

signals:
    /// errorStatus is 0 if every owner accepts; otherwise it belongs to the varbind at index.
    void decided(agent::SetCoordinator::Key key, int index, int errorStatus);

private:
    int nextNumber();
    void handleTimeout(Key key);
    void warnOfTimeout(const SetTransaction& set) const;
    void handleSettled(Key key);
    void announce(Key key);

    CellStore& m_store;
    CellOwners& m_owners;
    const int m_timeoutMs;
    std::map<Key, SetTransaction> m_sets;
    DelayQueue<Key> m_undecided;
    DelayQueue<ApplicationId> m_unresponsive;
    DeadlineQueue<Key> m_settling;
    Counts m_counts;
    Key m_lastKey = 0;
    int m_lastNumber = 0;
};

} // namespace agent

#endif
