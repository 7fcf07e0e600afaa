// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/PendingSends.h"

#include <algorithm>

using vigil::Oid;
using vigil::OidArcs;

void PendingSends::add(const OidArcs& oid, bool notify)
{
    Wish& wish = m_entries.emplace_hint(m_entries.end(), oid, Wish())->second; // a replay adds at the end
    wish.notify = wish.notify || notify;
}

void PendingSends::addTree(const Oid& tree)
{
    const OidArcs arcs = tree.toStdVector();
    vigil::eraseTree(m_entries, arcs);
    m_entries[arcs].withdrawTree = true;
}

int PendingSends::notifications() const
{
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [](const auto& entry) { return entry.second.notify; }));
}
