// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_OIDARCS_H
#define VIGIL_TYPES_OIDARCS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vigil {

/// The arcs of an Oid in one block of memory, a fifth of an Oid's size. They sort as Oid::compare() does.
using OidArcs = std::vector<unsigned int>;

inline bool isWithin(const OidArcs& tree, const OidArcs& oid)
{
    return tree.size() <= oid.size() && std::equal(tree.begin(), tree.end(), oid.begin());
}

/// FNV-1a, an arc at a time.
inline std::size_t hashOf(const OidArcs& oid)
{
    std::uint64_t hash = 14695981039346656037U;
    for (const unsigned int arc : oid)
        hash = (hash ^ arc) * 1099511628211U;
    return static_cast<std::size_t>(hash);
}

/// Erases the entries of a map keyed by OidArcs for tree and its descendants. Returns how many these were.
template <typename Map>
int eraseTree(Map& map, const OidArcs& tree)
{
    int erased = 0;
    auto entry = map.lower_bound(tree);
    for (; entry != map.end() && isWithin(tree, entry->first); ++erased)
        entry = map.erase(entry);
    return erased;
}

} // namespace vigil

#endif
