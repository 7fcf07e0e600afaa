// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_LOSTAPPLICATIONS_H
#define VIGIL_AGENT_CELLS_LOSTAPPLICATIONS_H

#include <QDateTime>

#include <cstdint>
#include <map>
#include <optional>
#include <set>

#include "agent/cells/CellStore.h"
#include "agent/cells/Owner.h"
#include "agent/core/Clock.h"
#include "agent/core/DeadlineQueue.h"
#include "agent/core/DelayQueue.h"
#include "agent/core/Timer.h"
#include "agent/core/Turn.h"

namespace agent {

/// Decides how long the cells of a lost application are served, and when its health checks read UNKNOWN.
///
/// An application is lost if its connection ends while it owns cells. A cell returns when another application
/// publishes it: usually the same program after its restart. The states of a lost application:
///
///     InGrace    managers read its last values
///     Covered    its health checks read UNKNOWN
///     Returning  some of its cells have returned; the rest follows soon or is removed
///     Leaving    its cells are being removed
///
///     state      | grace over      | cell returned | last cell   | return over | forget over, | turn
///                |                 |               | has gone    |             | no room      |
///     -----------+-----------------+---------------+-------------+-------------+--------------+----------
///     InGrace    | cover → Covered | → Returning   | end         | cannot be   | → Leaving    | none
///     Covered    | cannot be       | → Returning   | end         | cannot be   | → Leaving    | none
///     Returning  | cover           | none          | end         | → Leaving   | → Leaving    | none
///     Leaving    | cannot be       | none          | end         | cannot be   | cannot be    | remove (1)
///
/// (1) A few cells at a time, from the next turn of the event loop on, as far as a Turn goes. All cells at
/// once would delay managers. Applications that are leaving at the same time follow each other.
///
/// "Grace over" comes graceMs after the loss, "forget over" forgetMs after the loss, and "return over"
/// graceMs after the first cell returned. forget() is a "forget over". "No room" hits the oldest loss of the
/// user with the most, if a later loss exceeds the limits: no user can push out another one's. Those that are
/// leaving do not count there.
///
/// Ownership: store, clock and actions must outlive it.
class LostApplications
{
public:
    static constexpr size_t pieceSize = 16; ///< cells

    struct Settings
    {
        qint64 graceMs = 0;
        qint64 forgetMs = 0;        ///< can be DelayQueue::never
        size_t maxApplications = 1; ///< lost ones with cells
        size_t maxCells = 0;        ///< of all lost applications together; a single one may exceed it
    };

    enum class State { InGrace, Covered, Returning, Leaving };

    /// Carries out the actions of the table.
    class Actions
    {
    public:
        virtual ~Actions() = default;

        /// Makes the health checks the application still owns read UNKNOWN.
        virtual void cover(ApplicationId application, const QDateTime& lostSince) = 0;

        /// Removes the first cells the application still owns, at most as many as given.
        virtual void remove(ApplicationId application, size_t most) = 0;

        /// The application has no cells left and is no longer a lost one.
        virtual void end(ApplicationId application) = 0;
    };

    LostApplications(const CellStore& store, Clock& clock, const Settings& settings, Actions& actions);

    /// The connection has ended; the application owns at least one cell.
    void add(const Owner& owner);

    /// The same for a loss of the agent's last run. If its grace period is over, its health checks read
    /// UNKNOWN at once. It is forgotten after the rest of its time; if none is left, its cells are removed at
    /// once.
    void restore(const Owner& owner, const QDateTime& since);

    /// Removes a few cells of the user's oldest loss now, to make room; the others follow. False if there is
    /// none.
    bool removeSomeOf(const User& user);

    /// Removes the application as if its time were over. False if it is not lost, or leaving already.
    bool forget(ApplicationId application);

    /// A cell of a lost application now has another owner.
    void handleCellReturned(ApplicationId application);

    bool contains(ApplicationId application) const { return m_losses.count(application) > 0; }

    /// Nothing if the application is not lost.
    std::optional<State> stateOf(ApplicationId application) const;

private:
    struct Loss
    {
        State state;
        std::uint64_t number; // in the order of the losses
        QDateTime since;      // for texts: it may jump
        Owner owner;
    };

    void handleGraceOver(ApplicationId application);
    bool canForget() const { return m_settings.forgetMs != DelayQueue<ApplicationId>::never; }
    void forgetLater(ApplicationId application, qint64 lostMs);
    void leave(ApplicationId application);
    void leaveForRoom(ApplicationId application);
    void removeInTurn();
    void removePiece(ApplicationId application);
    void end(ApplicationId application);
    void stopDelays(ApplicationId application);
    bool isLeaving(ApplicationId application) const { return m_leaving.count(application) > 0; }
    bool isRoomShort() const;
    User largestUser() const;
    std::optional<ApplicationId> oldestOf(const User& user) const;

    const CellStore& m_store;
    Clock& m_clock;
    const Settings m_settings;
    Actions& m_actions;
    std::map<ApplicationId, Loss> m_losses;
    std::uint64_t m_lossCount = 0;
    DelayQueue<ApplicationId> m_graceDelay;
    DeadlineQueue<ApplicationId> m_forgetDelay;
    DelayQueue<ApplicationId> m_returnDelay;
    std::set<ApplicationId> m_leaving;
    Turn m_turn;
    Timer m_nextTurn;
};

} // namespace agent

#endif
