// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_SETCOORDINATOR_H
#define VIGIL_AGENT_SERVING_SETCOORDINATOR_H

#include <QObject>

#include <map>
#include <vector>

#include "agent/cells/CellOwners.h"
#include "agent/cells/CellStore.h"

namespace agent {

/// One object that a manager wants to set.
struct SetVarbind
{
    ObjectId id;
    CellValue value;
};

/// Asks the applications before a manager's SET takes effect.
///
/// Purpose: a SET goes through check() for each varbind, begin() for all of them together, decided(),
/// isStillValid() and commit(); drop() ends it at any point. All varbinds take effect or none does. Every
/// question to an application has a number of its own, and an answer that fits no open question is dropped:
/// it came too late.
///
/// Threads: the agent has one; decided() is emitted from the event loop, never from inside begin().
/// Ownership: store and owners must outlive the coordinator.
/// Failure: results are SNMP error statuses, 0 for none. An application that is lost or that does not answer
/// in time makes the SET fail with resourceUnavailable.
class SetCoordinator : public QObject
{
    Q_OBJECT

public:
    using Key = quint64;

    /// SETs since the start.
    struct Counts
    {
        quint64 forwarded = 0; ///< to applications
        quint64 refused = 0;   ///< of these, by an application
        quint64 timedOut = 0;  ///< of these, for want of an answer
    };

    SetCoordinator(CellStore& store, CellOwners& owners, int timeoutMs);

    /// What the agent itself can say: is there such a cell, an application to ask, and does the
    /// value fit?
    int check(const SetVarbind& varbind) const;

    /// Asks the owners of the cells. decided() follows unless drop() comes first.
    Key begin(std::vector<SetVarbind> varbinds);

    /// False when a cell has gone or changed hands since its owner was asked.
    bool isStillValid(Key key) const;

    /// Gives the cells their new values and tells their owners.
    void commit(Key key);

    void drop(Key key);

    const Counts& counts() const { return m_counts; }

    void handleAnswer(ApplicationId owner, int number, int errorStatus);
    void handleLost(ApplicationId owner);

signals:
    /// errorStatus is 0 when every owner accepts; otherwise it belongs to the varbind at index.
    void decided(agent::SetCoordinator::Key key, int index, int errorStatus);

private:
    struct Question
    {
        SetVarbind varbind;
        ApplicationId owner;
        int number;
        bool isAnswered;
    };

    struct Transaction
    {
        std::vector<Question> questions;
        bool isDecided = false;
    };

    int nextNumber();
    void decide(Key key, int index, int errorStatus);
    void refuseUnanswered(Key key);

    CellStore& m_store;
    CellOwners& m_owners;
    const int m_timeoutMs;
    std::map<Key, Transaction> m_transactions;
    Counts m_counts;
    Key m_lastKey = 0;
    int m_lastNumber = 0;
};

} // namespace agent

#endif
