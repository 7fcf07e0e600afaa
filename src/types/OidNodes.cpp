// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "types/OidNodes.h"

#include <iterator>

namespace vigil {

void OidNodes::assign(Oid& oid, const OidArcs& arcs)
{
    oid.m_arcs->assign(arcs.begin(), arcs.end());
}

void OidNodes::setArc(Oid& oid, std::size_t index, unsigned int arc)
{
    *std::next(oid.m_arcs->begin(), static_cast<std::ptrdiff_t>(index)) = arc;
}

} // namespace vigil
