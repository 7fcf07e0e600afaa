// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_VALUECACHE_H
#define VIGIL_CLIENT_VALUECACHE_H

#include <QVariant>

#include <cstddef>
#include <map>
#include <unordered_map>

#include <vigil/Oid.h>

#include "types/OidArcs.h"

/// Everything the application has published: what the client sends again after a reconnect.
///
/// One entry for each identifier, in the order of the identifiers, which is the order of the replay. An
/// invalid QVariant means unset; the replay unsets the identifier again. Only removeTree() removes entries.
///
/// A published value finds its entry by hash. In the map a look-up takes a fifth of the time of a
/// publication, because the identifiers of an application begin with the same arcs.
class ValueCache
{
public:
    /// An invalid value unsets oid. If memory runs out, it may be repeated.
    void set(const vigil::OidArcs& oid, const QVariant& value);

    /// Removes tree and its descendants, and returns how many entries these were. If there was a descendant,
    /// tree stays as unset: the replay repeats the removal.
    int removeTree(const vigil::Oid& tree);

    /// Invalid for an identifier that is unset, or unknown.
    QVariant value(const vigil::OidArcs& oid) const;

    auto begin() const { return m_values.begin(); }
    auto end() const { return m_values.end(); }

private:
    using Values = std::map<vigil::OidArcs, QVariant>;
    using Index = std::unordered_multimap<std::size_t, Values::iterator>;

    Index::iterator find(const vigil::OidArcs& oid);
    Values::iterator erase(Values::iterator entry);

    Values m_values;
    Index m_index; // by the hash of the identifier
};

#endif
