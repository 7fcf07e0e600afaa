// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/LatestPublications.h"

#include <utility>

using vigil::OidArcs;

void LatestPublications::add(Publication publication)
{
    Publications next;
    next.push_back(std::move(publication));
    if (next.front().kind == Publication::Kind::TreeWithdrawal)
        eraseTree(next.front().oid);
    else
        index(next.begin());
    m_publications.splice(m_publications.end(), next);
}

void LatestPublications::index(Position next)
{
    const auto [last, isFirst] = m_values.insert(next);
    if (!isFirst)
        replace(last, next);
}

/// Takes no memory.
void LatestPublications::replace(Values::iterator last, Position next)
{
    const Position previous = *last;
    auto entry = m_values.extract(last);
    entry.value() = next;
    m_values.insert(std::move(entry));
    next->notify = next->notify || previous->notify;
    m_publications.erase(previous);
}

void LatestPublications::eraseTree(const OidArcs& tree)
{
    for (auto position = m_publications.begin(); position != m_publications.end();) {
        const auto current = position++;
        if (!vigil::isWithin(tree, current->oid))
            continue;
        m_values.erase(current);
        m_publications.erase(current);
    }
}
