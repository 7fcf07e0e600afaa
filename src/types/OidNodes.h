// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_OIDNODES_H
#define VIGIL_TYPES_OIDNODES_H

#include <cstddef>

#include <vigil/Oid.h>

#include "types/OidArcs.h"

namespace vigil {

/// Changes the arcs of an Oid in place, with the nodes its list already has. A new list of thirty nodes costs
/// half as much as a queued call.
struct OidNodes
{
    static void assign(Oid& oid, const OidArcs& arcs);

    /// Replaces one arc; there must be one at index.
    static void setArc(Oid& oid, std::size_t index, unsigned int arc);
};

} // namespace vigil

#endif
