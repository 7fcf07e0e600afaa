// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ValueCache.h"

using vigil::Oid;

void ValueCache::set(const Oid& oid, const QVariant& value)
{
    m_values[oid] = value;
}

void ValueCache::unset(const Oid& oid)
{
    m_values[oid] = QVariant();
}

int ValueCache::removeTree(const Oid& tree)
{
    int removed = 0;
    bool hadDescendants = false;
    auto entry = m_values.lower_bound(tree);
    while (entry != m_values.end() && tree.containsChild(entry->first)) {
        hadDescendants = hadDescendants || entry->first != tree;
        entry = m_values.erase(entry);
        ++removed;
    }
    if (hadDescendants)
        unset(tree);
    return removed;
}
