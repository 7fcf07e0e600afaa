// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_DEADLINEQUEUE_H
#define VIGIL_AGENT_CORE_DEADLINEQUEUE_H

#include <functional>
#include <map>
#include <utility>

#include "agent/core/Clock.h"
#include "agent/core/Timer.h"

namespace agent {

/// Lets keys wait, each for a delay of its own, and reports each expired key. DelayQueue is cheaper
/// if all wait for the same delay.
///
/// Ownership: the clock must outlive the queue.
template <typename Key>
class DeadlineQueue
{
public:
    /// Called from the event loop with a key and the time it has waited. The key has left the queue.
    using Expired = std::function<void(const Key& key, qint64 waitedMs)>;

    DeadlineQueue(Clock& clock, Expired expired)
        : m_clock(clock), m_expired(std::move(expired)), m_timer(clock, [this] { expireDue(); })
    {}

    /// The key waits from now on, even if it is waiting already.
    void restart(const Key& key, qint64 delayMs)
    {
        remove(key);
        const auto entry = m_entries.try_emplace(key).first;
        const qint64 now = m_clock.elapsedMs();
        entry->second = m_order.emplace(now + delayMs, std::pair(now, &entry->first));
        arm();
    }

    void remove(const Key& key)
    {
        const auto entry = m_entries.find(key);
        if (entry == m_entries.end())
            return;
        m_order.erase(entry->second);
        m_entries.erase(entry);
    }

    size_t size() const { return m_entries.size(); }

private:
    // By deadline: the start of the wait, and the key.
    using Order = std::multimap<qint64, std::pair<qint64, const Key*>>;

    /// The timer may fire too early, since a deadline may have moved, but never too late.
    void arm()
    {
        if (m_order.empty() || (m_timer.isActive() && m_armedFor <= m_order.begin()->first))
            return;
        m_armedFor = m_order.begin()->first;
        m_timer.startOnce(m_armedFor - m_clock.elapsedMs());
    }

    void expireDue()
    {
        while (!m_order.empty() && m_order.begin()->first <= m_clock.elapsedMs()) {
            const auto [since, key] = m_order.begin()->second;
            m_order.erase(m_order.begin());
            const auto entry = m_entries.extract(*key);
            m_expired(entry.key(), m_clock.elapsedMs() - since);
        }
        arm();
    }

    Clock& m_clock;
    const Expired m_expired;
    Order m_order;
    std::map<Key, typename Order::iterator> m_entries;
    qint64 m_armedFor = 0;
    Timer m_timer;
};

} // namespace agent

#endif
