// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/QueueOverflow.h"

#include <utility>

using vigil::Oid;
using vigil::OidArcs;

void QueueOverflow::set(const Oid& oid, const QVariant& value, bool notify, int bytes)
{
    if (m_bytesLeft >= 0)
        m_bytesLeft -= bytes;
    Publications next;
    next.push_back({Publication::Kind::Value, oid.toStdVector(), value, notify});
    const auto [last, isFirst] = m_last.insert(next.begin());
    if (!isFirst)
        replace(last, next);
    m_publications.splice(m_publications.end(), next);
}

/// Takes no memory.
void QueueOverflow::replace(Last::iterator last, Publications& next)
{
    const Position previous = *last;
    auto entry = m_last.extract(last);
    entry.value() = next.begin();
    m_last.insert(std::move(entry));
    if (m_bytesLeft >= 0)
        return;
    next.front().notify = next.front().notify || previous->notify;
    m_publications.erase(previous);
}

void QueueOverflow::withdrawTree(const Oid& tree)
{
    Publications next;
    next.push_back({Publication::Kind::TreeWithdrawal, tree.toStdVector(), QVariant(), false});
    const OidArcs& arcs = next.front().oid;
    for (auto position = m_publications.begin(); position != m_publications.end();) {
        const auto current = position++;
        if (!vigil::isWithin(arcs, current->oid))
            continue;
        m_last.erase(current); // no wish for a notification may pass on
        if (m_bytesLeft < 0)
            m_publications.erase(current);
    }
    m_publications.splice(m_publications.end(), next);
}

QueueOverflow::Publications QueueOverflow::takeAll()
{
    m_last.clear();
    return std::exchange(m_publications, {});
}
