// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_SETTRANSACTION_H
#define VIGIL_AGENT_SERVING_SETTRANSACTION_H

#include <vector>

#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// One object in a manager's SET, with the value it is to get.
struct SetVarbind
{
    ObjectId id;
    CellValue value;
};

/// The life of one SET, from the questions to the owners of its cells to the commit.
///
/// All varbinds take effect or none does. The first refusal, loss or time-out decides the SET. After the last
/// acceptance the SET settles for a moment: an owner that ends right after its answer is still noticed. After
/// the decision, answers have no effect.
class SetTransaction
{
public:
    enum State {
        Asking,    ///< an owner has yet to answer
        Settling,  ///< all owners agree; the loss of one still counts
        Accepted,  ///< the SET is to take effect
        Refused,   ///< the manager gets an error
        Committed, ///< the cells have their new values
    };

    enum Event {
        OneAccepts, ///< others have yet to answer
        LastAccepts,
        OneRefuses,
        OwnerLost,
        TimedOut,
        Settled, ///< no owner was lost since the last answer
        Commit,
    };

    // clang-format off
    static constexpr State nextState[5][7] = {
        //              OneAccepts  LastAccepts  OneRefuses  OwnerLost   TimedOut    Settled     Commit
        /* Asking    */ {Asking,    Settling,    Refused,    Refused,    Refused,    Asking,     Asking},
        /* Settling  */ {Settling,  Settling,    Settling,   Refused,    Settling,   Accepted,   Settling},
        /* Accepted  */ {Accepted,  Accepted,    Accepted,   Accepted,   Accepted,   Accepted,   Committed},
        /* Refused   */ {Refused,   Refused,     Refused,    Refused,    Refused,    Refused,    Refused},
        /* Committed */ {Committed, Committed,   Committed,  Committed,  Committed,  Committed,  Committed},
    };
    // clang-format on

    struct Question
    {
        SetVarbind varbind;
        ApplicationId owner = 0;
        int number = 0; ///< the owner's answer carries the same number
        bool isAccepted = false;
    };

    /// The SNMP error status, 0 for none, and the index of the varbind it belongs to.
    struct Decision
    {
        int index = 0;
        int errorStatus = 0;
    };

    explicit SetTransaction(std::vector<Question> questions);

    const std::vector<Question>& questions() const { return m_questions; }
    State state() const { return m_state; }

    /// Valid from the decision on.
    const Decision& decision() const { return m_decision; }

    /// True while the owner's answer with this number is outstanding.
    bool isAwaiting(ApplicationId owner, int number) const;

    // Events. Each returns true if it changes the state.

    /// The SET must be waiting for this answer.
    bool handleAnswer(ApplicationId owner, int number, int errorStatus);
    bool handleLost(ApplicationId owner);
    bool handleTimeout();
    bool handleSettled();

    /// False if the SET is not accepted, or is committed already.
    bool commit();

private:
    size_t indexOfOpen(ApplicationId owner, int number) const;
    bool step(Event event, size_t index, int errorStatus);

    std::vector<Question> m_questions;
    State m_state = Asking;
    Decision m_decision;
};

} // namespace agent

#endif
