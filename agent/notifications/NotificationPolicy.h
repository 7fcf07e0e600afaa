// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONPOLICY_H
#define VIGIL_AGENT_NOTIFICATIONS_NOTIFICATIONPOLICY_H

#include <QObject>

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "agent/cells/HealthTable.h"
#include "agent/core/Clock.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// A change of a health check that managers are told of.
struct HealthChange
{
    ObjectId check; ///< the index of its row
    int status = healthTable::unknownStatus;
    int previousStatus = healthTable::unknownStatus; ///< in the last notification, or what came before any
    std::string summary;
};

/// Decides which changes of health checks managers are told of, and when.
///
/// Purpose: one notification for one change of what managers read, with the text that belongs to it, and no
/// flood of them.
///
/// A check says nothing before it has been evaluated: written with a status other than UNKNOWN, or with a
/// summary that is not empty. Applications create their rows as UNKNOWN with an empty one. The first
/// evaluation is news only when it is WARNING or CRITICAL; its previous status is UNKNOWN. From then on every
/// change is, whoever made it. So after a start of the agent, when all applications send what they have
/// again, managers hear of the checks that need attention and of no others.
///
/// Applications write the summary behind the status, so that a new status waits for the next summary, for a
/// short time. Statuses that come and go within that time are not news, nor are those within the second in
/// which nothing is sent about a check after a notification about it. A row that is removed takes back what
/// waits; if it is made again, it is evaluated anew, but the second goes on.
///
/// Threads: the agent has one. notify is called from the event loop or from inside the functions here.
/// Ownership: the clock must outlive the policy. Failure: none.
class NotificationPolicy : public QObject
{
    Q_OBJECT

public:
    /// What managers read of a check, nothing when its status is not there.
    struct Served
    {
        int status;
        std::string summary;
    };
    using LookUp = std::function<std::optional<Served>(const ObjectId& check)>;
    using Notify = std::function<void(const HealthChange& change)>;

    NotificationPolicy(Clock& clock, LookUp served, Notify notify);

    // To be called when look-ups give the new state.

    /// By the application; with the value that it wrote.
    void handleStatusWritten(const ObjectId& check, int status);
    void handleSummaryWritten(const ObjectId& check, const std::string& summary);

    /// By the agent, which has set status and summary together.
    void handleCovered(const ObjectId& check);

    void handleRemoved(const ObjectId& check);

    /// How many checks take up memory here.
    size_t size() const { return m_checks.size(); }

private:
    struct Check
    {
        bool isEvaluated = false;
        bool isKnown = false; // its first evaluation has been dealt with
        int written = healthTable::unknownStatus;
        int notified = healthTable::unknownStatus;
        qint64 summaryDueMs = 0; // a status waits for its summary until then
        qint64 quietUntilMs = 0;
        std::optional<qint64> wakeUpMs;
    };

    void consider(const ObjectId& id, Check& check);
    bool isNews(Check& check, int status) const;
    void wakeUpAt(qint64 timeMs, const ObjectId& id, Check& check);
    void wakeUp(const ObjectId& id);

    Clock& m_clock;
    const LookUp m_served;
    const Notify m_notify;
    std::map<ObjectId, Check> m_checks;
};

} // namespace agent

#endif
