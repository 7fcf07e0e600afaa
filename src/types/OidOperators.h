// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_OIDOPERATORS_H
#define VIGIL_TYPES_OIDOPERATORS_H

#include <vigil/Oid.h>

namespace vigil {

// Not in the public header: the library keys its maps by these, applications call Oid::compare().

inline bool operator==(const Oid& left, const Oid& right)
{
    return left.compare(right) == 0;
}

inline bool operator!=(const Oid& left, const Oid& right)
{
    return left.compare(right) != 0;
}

inline bool operator<(const Oid& left, const Oid& right)
{
    return left.compare(right) < 0;
}

} // namespace vigil

#endif
