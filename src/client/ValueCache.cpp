// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ValueCache.h"

#include <algorithm>

using vigil::Oid;
using vigil::OidArcs;

void ValueCache::set(const OidArcs& oid, const QVariant& value)
{
    const auto known = find(oid);
    if (known != m_index.end())
        known->second->second = value;
    else
        m_index.emplace(vigil::hashOf(oid), m_values.insert_or_assign(oid, value).first);
}

int ValueCache::removeTree(const Oid& tree)
{
    const OidArcs arcs = tree.toStdVector();
    const auto root = m_values.find(arcs);
    const int own = root == m_values.end() ? 0 : 1;
    auto entry = m_values.upper_bound(arcs);
    if (entry == m_values.end() || !vigil::isWithin(arcs, entry->first)) {
        if (own > 0)
            erase(root);
        return own;
    }
    set(arcs, QVariant()); // first: memory may run out
    int removed = own;
    for (; entry != m_values.end() && vigil::isWithin(arcs, entry->first); ++removed)
        entry = erase(entry);
    return removed;
}

QVariant ValueCache::value(const OidArcs& oid) const
{
    const auto entry = m_values.find(oid);
    return entry == m_values.end() ? QVariant() : entry->second;
}

ValueCache::Index::iterator ValueCache::find(const OidArcs& oid)
{
    const auto [begin, end] = m_index.equal_range(vigil::hashOf(oid));
    const auto found =
        std::find_if(begin, end, [&](const auto& entry) { return entry.second->first == oid; });
    return found == end ? m_index.end() : found;
}

ValueCache::Values::iterator ValueCache::erase(Values::iterator entry)
{
    const auto indexed = find(entry->first);
    if (indexed != m_index.end()) // else memory ran out when it was set
        m_index.erase(indexed);
    return m_values.erase(entry);
}
