// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_LOSTAPPLICATIONS_H
#define VIGIL_AGENT_CELLS_LOSTAPPLICATIONS_H

#include <QDateTime>

#include <cstdint>
#include <map>
#include <optional>

#include "agent/cells/CellStore.h"
#include "agent/cells/Owner.h"
#include "agent/core/Clock.h"
#include "agent/core/DelayQueue.h"

namespace agent {

/// Decides how long the cells of a lost application are served, and when its health checks read UNKNOWN.
///
/// An application is lost if its connection ends while it owns cells. A cell returns when another application
/// publishes it: usually the same program after its restart. The states of a lost application:
///
///     InGrace    managers read its last values
///     Covered    its health checks read UNKNOWN
///     Returning  some of its cells have returned; the rest follows soon or is removed
///
///     state      | grace over      | cell returned | last cell returned | return over | forget over, no room
///     -----------+-----------------+---------------+--------------------+-------------+---------------------
///     InGrace    | cover → Covered | → Returning   | end                | cannot be   | remove, end
///     Covered    | cannot be       | → Returning   | end                | cannot be   | remove, end
///     Returning  | cover           | none          | end                | remove, end | remove, end
///
/// "Grace over" comes graceMs after the loss, "forget over" forgetMs after the loss, and "return over"
/// graceMs after the first cell returned. forget() is a "forget over". "No room" hits the oldest loss of the
/// user with the most, if a later loss exceeds the limits: no user can push out another one's.
///
/// Ownership: store, clock and actions must outlive it.
class LostApplications
{
public:
    struct Settings
    {
        qint64 graceMs = 0;
        qint64 forgetMs = 0;        ///< can be DelayQueue::never
        size_t maxApplications = 1; ///< lost ones with cells
        size_t maxCells = 0;        ///< of all lost applications together; the last one lost may exceed it
    };

    enum class State { InGrace, Covered, Returning };

    /// Carries out the actions of the table.
    class Actions
    {
    public:
        virtual ~Actions() = default;

        /// The health checks that the application still owns are to read UNKNOWN.
        virtual void cover(ApplicationId application, const QDateTime& lostSince) = 0;

        /// Removes the cells that the application still owns.
        virtual void remove(ApplicationId application) = 0;

        /// The application has no cells left and is no longer a lost one.
        virtual void end(ApplicationId application) = 0;
    };

    LostApplications(const CellStore& store, Clock& clock, const Settings& settings, Actions& actions);

    /// The connection has ended; the application owns at least one cell.
    void add(const Owner& owner);

    /// The same for a loss of the agent's last run. If its grace period is over, its health checks read
    /// UNKNOWN at once. If it is to be forgotten, its cells are removed at once.
    void restore(const Owner& owner, const QDateTime& since);

    /// Removes the oldest loss of the user to make room. False if there is none.
    bool removeOldestOf(const User& user);

    /// Removes the application as if its time were over. False if it is not lost.
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
    void removeAndEnd(ApplicationId application);
    void end(ApplicationId application);
    bool isRoomShort() const;
    User largestUser() const;

    const CellStore& m_store;
    Clock& m_clock;
    const Settings m_settings;
    Actions& m_actions;
    std::map<ApplicationId, Loss> m_losses;
    std::uint64_t m_lossCount = 0;
    DelayQueue<ApplicationId> m_graceDelay;
    DelayQueue<ApplicationId> m_forgetDelay;
    DelayQueue<ApplicationId> m_returnDelay;
};

} // namespace agent

#endif
