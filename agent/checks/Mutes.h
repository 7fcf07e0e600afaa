// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_MUTES_H
#define VIGIL_AGENT_CHECKS_MUTES_H

#include <QDateTime>
#include <QObject>

#include <map>

#include "agent/core/Clock.h"
#include "agent/core/DeadlineQueue.h"
#include "agent/core/Error.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The checks an operator has muted: managers get no notifications about them for some time.
///
/// A mute belongs to the keys of its check, so it outlasts a restart of the application.
///
/// Ownership: the clock must outlive it.
class Mutes : public QObject
{
    Q_OBJECT

public:
    static constexpr size_t most = 10'000;
    static constexpr qint64 longestMs = qint64{366} * 86'400'000;

    explicit Mutes(Clock& clock);

    /// Mutes the check from now on. A new time replaces the old one. check is the index of its row.
    Error mute(const ObjectId& check, qint64 forMs);

    /// False if the check is not muted.
    bool unmute(const ObjectId& check);

    bool contains(const ObjectId& check) const { return m_until.count(check) > 0; }

    /// UTC; null if the check is not muted.
    QDateTime untilOf(const ObjectId& check) const;

    /// All of them, with their ends.
    const std::map<ObjectId, QDateTime>& all() const { return m_until; }

    /// Takes up what all() returned in the agent's last run. Those over by now are left out.
    void restore(const std::map<ObjectId, QDateTime>& mutes);

signals:
    /// The check is muted, no longer muted, or muted until another time.
    void changed(const agent::ObjectId& check);

private:
    Clock& m_clock;
    std::map<ObjectId, QDateTime> m_until;
    DeadlineQueue<ObjectId> m_deadlines;
};

} // namespace agent

#endif
