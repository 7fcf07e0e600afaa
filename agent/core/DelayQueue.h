// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_DELAYQUEUE_H
#define VIGIL_AGENT_CORE_DELAYQUEUE_H

#include <functional>
#include <list>
#include <map>
#include <utility>

#include "agent/core/Clock.h"

namespace agent {

/// Lets keys wait, all for the same delay, and reports each expired key.
///
/// There may be a key for each of a hundred thousand checks, restarted by every update. The queue is in the
/// order of the starts, so it needs one timer, and an update costs one look-up of its key.
///
/// Ownership: the clock must outlive the queue.
template <typename Key>
class DelayQueue
{
public:
    /// As delayMs: the queue keeps no keys, so no key expires.
    static constexpr qint64 never = -1;

    /// Called from the event loop with a key and the time it has waited. The key has left the queue.
    using Expired = std::function<void(const Key& key, qint64 waitedMs)>;

    DelayQueue(Clock& clock, qint64 delayMs, Expired expired)
        : m_clock(clock), m_delayMs(delayMs), m_expired(std::move(expired))
    {}

    /// The key waits from now on, even if it is waiting already.
    void restart(const Key& key)
    {
        if (m_delayMs == never)
            return;
        const auto [entry, isNew] = m_entries.try_emplace(key);
        if (!isNew)
            m_order.erase(entry->second);
        entry->second = m_order.insert(m_order.end(), {m_clock.elapsedMs(), &entry->first});
        arm();
    }

    /// The key waits from now on, unless it is waiting already.
    void start(const Key& key)
    {
        if (!contains(key))
            restart(key);
    }

    void remove(const Key& key)
    {
        const auto entry = m_entries.find(key);
        if (entry == m_entries.end())
            return;
        m_order.erase(entry->second);
        m_entries.erase(entry);
    }

    bool contains(const Key& key) const { return m_entries.count(key) > 0; }
    size_t size() const { return m_entries.size(); }

private:
    using Order = std::list<std::pair<qint64, const Key*>>; // start of the wait and key, oldest first

    void arm()
    {
        if (m_isArmed || m_order.empty())
            return;
        m_isArmed = true;
        m_clock.callAt(m_order.front().first + m_delayMs, &m_context, [this] { expireDue(); });
    }

    void expireDue()
    {
        m_isArmed = false;
        while (!m_order.empty() && m_order.front().first + m_delayMs <= m_clock.elapsedMs()) {
            const auto [since, key] = m_order.front();
            m_order.pop_front();
            const auto entry = m_entries.extract(*key);
            m_expired(entry.key(), m_clock.elapsedMs() - since);
        }
        arm();
    }

    Clock& m_clock;
    const qint64 m_delayMs;
    const Expired m_expired;
    Order m_order;
    std::map<Key, typename Order::iterator> m_entries;
    bool m_isArmed = false;
    QObject m_context; // last, so that its destruction cancels the call before the members go
};

} // namespace agent

#endif
