// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_RANGEBOUNDS_H
#define VIGIL_AGENT_CHECKS_RANGEBOUNDS_H

#include <string>

namespace agent {

/// The bounds in the text of a range, as VigilRange in VIGIL-MIB has it.
struct RangeBounds
{
    std::string lower;      ///< a decimal number; empty without a lower bound
    std::string upper;      ///< a decimal number; empty without an upper bound
    bool isInverse = false; ///< the values from lower to upper are the bad ones

    /// False for an empty range, for "off", and for any text other than a range: every value is acceptable.
    bool isLimited() const { return !lower.empty() || !upper.empty(); }
};

RangeBounds boundsOf(const std::string& range);

} // namespace agent

#endif
