// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ValueCache.h"

using vigil::Oid;
using vigil::OidArcs;

void ValueCache::set(const Oid& oid, const QVariant& value)
{
    m_values[oid.toStdVector()] = value;
}

void ValueCache::unset(const Oid& oid)
{
    set(oid, QVariant());
}

int ValueCache::removeTree(const Oid& tree)
{
    const OidArcs arcs = tree.toStdVector();
    const int own = static_cast<int>(m_values.count(arcs));
    const int removed = vigil::eraseTree(m_values, arcs);
    if (removed > own)
        unset(tree);
    return removed;
}

QVariant ValueCache::value(const OidArcs& oid) const
{
    const auto entry = m_values.find(oid);
    return entry == m_values.end() ? QVariant() : entry->second;
}
