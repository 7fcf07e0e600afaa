// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONPOLICY_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONPOLICY_H

#include <QObject>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "agent/cells/HealthTable.h"
#include "agent/cells/LostCheck.h"
#include "agent/checks/Mutes.h"
#include "agent/core/Clock.h"
#include "agent/core/DelayQueue.h"
#include "agent/core/ObjectId.h"
#include "agent/notifications/HealthChange.h"

namespace agent {

/// Decides which changes of health checks managers are notified of, and when.
///
/// A check sends nothing until its first evaluation: a status other than UNKNOWN, or a summary with text.
/// Creating a row writes neither. The first evaluation is sent if it is WARNING or CRITICAL, with the
/// previous status UNKNOWN. From then on every change of the status is sent, made by the application or by
/// the agent. After a restart of the agent all applications replay their cells, so managers hear only about
/// checks in need of attention.
///
/// Applications write the summary after the status. A new status waits for it, at most 200 ms. A further
/// change does not extend the wait; the summary may never arrive. After a notification the check is muted for
/// one second. A change and its reversal during a wait send nothing. Removing a row drops its pending change;
/// a row created again stays muted for the rest of the second. Forgetting a row is sent.
///
/// An operator's mute works in the same way: at its end the status is compared with the last one sent. A row
/// forgotten meanwhile is told then. If it comes back before, it goes on from the status managers know.
///
/// Ownership: clock and mutes must outlive the policy.
class NotificationPolicy : public QObject
{
    Q_OBJECT

public:
    enum State {
        Unevaluated,     ///< the row has been created only
        Settled,         ///< managers know the status
        AwaitingSummary, ///< a new status waits for its summary
        Pending,         ///< a change waits until the check is no longer muted
    };

    enum Event {
        NewStatus,  ///< from the application, and not the one it wrote before
        SameStatus, ///< from the application, once more
        Summary,
        EmptySummary,
        Covered, ///< by the agent, status and summary at once
        Overdue, ///< the summary has not arrived in time
        Unmuted,
    };

    enum Action {
        Ignore,
        Await,   ///< enter AwaitingSummary
        Compare, ///< with the last notification. The same status: enter Settled. Another one: send it and
                 ///< enter Settled; if the check is muted, enter Pending
    };

    // clang-format off
    static constexpr Action actions[4][7] = {
        //                    NewStatus  SameStatus  Summary  EmptySummary  Covered  Overdue  Unmuted
        /* Unevaluated     */ {Await,    Ignore,     Compare, Ignore,       Ignore,  Ignore,  Ignore},
        /* Settled         */ {Await,    Compare,    Compare, Compare,      Compare, Ignore,  Ignore},
        /* AwaitingSummary */ {Ignore,   Ignore,     Compare, Compare,      Compare, Compare, Ignore},
        /* Pending         */ {Await,    Compare,    Compare, Compare,      Compare, Ignore,  Compare},
    };
    // clang-format on

    /// What managers read of a check.
    struct Served
    {
        int status;
        std::string summary;
    };
    /// Returns nothing if the check has no status.
    using LookUp = std::function<std::optional<Served>(const ObjectId& check)>;
    using Notify = std::function<void(const HealthChange& change)>;

    /// notify is called from the event loop, and from inside the functions below.
    NotificationPolicy(Clock& clock, const Mutes& mutes, LookUp served, Notify notify);

    // Call these once the look-up returns the new state.

    /// status is the application's own.
    void handleStatusWritten(const ObjectId& check, int status);
    void handleSummaryWritten(const ObjectId& check, const std::string& summary);
    void handleCovered(const ObjectId& check);
    void handleRemoved(const ObjectId& check);

    /// The agent is about to remove the row: its application has been lost for long. Managers hear so at
    /// once, if they have heard of the check.
    void handleForgotten(const ObjectId& check);

    /// The number of checks in memory.
    size_t size() const
    {
        return m_checks.size() + m_justNotified.size() + m_restored.size() + m_forgotten.size();
    }

    /// The statuses managers know.
    std::map<ObjectId, int> notified() const;

    /// Takes up what notified() returned in the agent's last run. Checks that do not come back within forMs
    /// are forgotten (-1: never).
    void restore(std::map<ObjectId, int> notified, qint64 forMs);

    /// The rows forgotten while muted, as managers will hear of them.
    std::vector<LostCheck> forgotten() const;

    /// Takes up what forgotten() returned in the agent's last run. Call restore() first. Managers hear at
    /// once of those no longer muted.
    void restoreForgotten(const std::vector<LostCheck>& forgotten);

private:
    struct Check
    {
        State state = Unevaluated;
        int written = healthTable::unknownStatus;
        std::optional<int> notified; // the status managers know, once the check is evaluated
    };

    Check& checkOf(const ObjectId& id);
    void handle(Event event, const ObjectId& id);
    void enter(State state, const ObjectId& id, Check& check);
    void compare(const ObjectId& id, Check& check);
    bool isMuted(const ObjectId& id) const { return m_justNotified.contains(id) || m_mutes.contains(id); }
    void handleMuteChanged(const ObjectId& id);
    void tell(const HealthChange& forgotten);

    Clock& m_clock;
    const Mutes& m_mutes;
    const LookUp m_served;
    const Notify m_notify;
    std::map<ObjectId, Check> m_checks;           // each has a status cell
    std::map<ObjectId, int> m_restored;           // what managers know of checks that have not come back yet
    std::map<ObjectId, HealthChange> m_forgotten; // while muted; the rows are gone
    DelayQueue<ObjectId> m_awaiting;
    DelayQueue<ObjectId> m_justNotified; // muted for a second
};

} // namespace agent

#endif
