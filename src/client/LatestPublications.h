// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_LATESTPUBLICATIONS_H
#define VIGIL_CLIENT_LATESTPUBLICATIONS_H

#include <cstddef>
#include <list>
#include <unordered_set>

#include "client/Publication.h"
#include "types/OidArcs.h"

/// The last publication of each identifier, in the order of publishing. It cannot outgrow the cells of the
/// application.
class LatestPublications
{
public:
    using Publications = std::list<Publication>;

    /// A value or its withdrawal replaces the earlier value, whose wish for a notification passes on. The
    /// withdrawal of a tree replaces everything in it; it looks at all publications, because nothing in the
    /// library withdraws trees. If memory runs out, nothing changes.
    void add(Publication publication);

    const Publications& all() const { return m_publications; }

private:
    using Position = Publications::iterator;

    struct Hash
    {
        std::size_t operator()(Position position) const { return vigil::hashOf(position->oid); }
    };
    struct HasSameOid
    {
        bool operator()(Position left, Position right) const { return left->oid == right->oid; }
    };

    using Values = std::unordered_set<Position, Hash, HasSameOid>;

    void index(Position next);
    void replace(Values::iterator last, Position next);
    void eraseTree(const vigil::OidArcs& tree);

    Publications m_publications;
    Values m_values; // those of kind Value
};

#endif
