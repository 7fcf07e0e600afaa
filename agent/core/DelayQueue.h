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

/// Tells when a key has waited for a time that is the same for all of them.
///
/// Purpose: there may be a key for each of a hundred thousand checks, begun anew with every update. A queue
/// in the order of the beginnings needs one timer, and an update costs no more than finding its key.
///
/// Threads: the agent has one; keys expire from the event loop. Ownership: the clock must outlive the queue.
/// Failure: none.
template <typename Key>
class DelayQueue
{
public:
    /// For delayMs: no key ever expires.
    static constexpr qint64 never = -1;

    /// expired gets the key and how long it has waited. The key is out of the queue by then.
    using Expired = std::function<void(const Key& key, qint64 waitedMs)>;

    DelayQueue(Clock& clock, qint64 delayMs, Expired expired)
        : m_clock(clock), m_delayMs(delayMs), m_expired(std::move(expired))
    {}

    /// The key waits from now on, also when it has been waiting.
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

    /// The key waits from now on unless it has been waiting.
    void start(const Key& key)
    {
        if (m_entries.count(key) == 0)
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

private:
    using Order = std::list<std::pair<qint64, const Key*>>; // since when, oldest first

    void arm()
    {
        if (m_isArmed || m_order.empty())
            return;
        m_isArmed = true;
        m_clock.callAfter(m_order.front().first + m_delayMs - m_clock.elapsedMs(), &m_context,
                          [this] { expireDue(); });
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
    QObject m_context; // last: what is still to be called goes before what it uses
};

} // namespace agent

#endif
