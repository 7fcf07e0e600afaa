// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ValueCache.h"

#include <iterator>

using vigil::Oid;
using vigil::OidArcs;

int ValueCache::removeTree(const Oid& tree)
{
    const OidArcs arcs = tree.toStdVector();
    const auto descendant = m_values.upper_bound(arcs);
    if (descendant == m_values.end() || !vigil::isWithin(arcs, descendant->first))
        return static_cast<int>(m_values.erase(arcs));
    const int own = static_cast<int>(m_values.count(arcs));
    const auto root = m_values.insert_or_assign(arcs, QVariant()).first; // first: memory may run out
    int removed = own;
    for (auto entry = std::next(root); entry != m_values.end() && vigil::isWithin(arcs, entry->first);
         ++removed)
        entry = m_values.erase(entry);
    return removed;
}

QVariant ValueCache::value(const OidArcs& oid) const
{
    const auto entry = m_values.find(oid);
    return entry == m_values.end() ? QVariant() : entry->second;
}
