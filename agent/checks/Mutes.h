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
#include "agent/core/Mute.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// The checks an operator has muted: managers get no notifications about them for some time.
///
/// A mute belongs to the keys of its check, so it outlasts a restart of the application. It lasts for the
/// time wanted, even if the host's time changes meanwhile.
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

    bool contains(const ObjectId& check) const { return m_running.count(check) > 0; }

    /// UTC; null if the check is not muted.
    QDateTime untilOf(const ObjectId& check) const;

    /// By the indexes of the checks.
    std::map<ObjectId, Mute> all() const;

    /// Takes up what all() returned in the agent's last run. Those over by now are left out. None lasts
    /// longer than it was wanted for: the host's time may be wrong.
    void restore(const std::map<ObjectId, Mute>& mutes);

signals:
    /// The check is muted, no longer muted, or muted until another time.
    void changed(const agent::ObjectId& check);

private:
    struct Running
    {
        Mute mute;
        qint64 endMs; // on elapsedMs()
    };

    QDateTime untilOf(const Running& running) const;

    Clock& m_clock;
    std::map<ObjectId, Running> m_running;
    DeadlineQueue<ObjectId> m_deadlines;
};

} // namespace agent

#endif
