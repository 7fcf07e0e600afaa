// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/RangeHistory.h"

#include <cstdint>
#include <cstring>
#include <tuple>

using vigil::Range;

namespace {

std::uint64_t bitsOf(double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}

/// Off and Unset differ in their text alone.
int modeOf(const Range& range)
{
    if (range.isEnabled())
        return range.isInverse() ? 1 : 0;
    return range.toString().empty() ? 2 : 3;
}

std::tuple<int, std::uint64_t, std::uint64_t> keyOf(const Range& range)
{
    return {modeOf(range), bitsOf(range.getLowerBound()), bitsOf(range.getUpperBound())};
}

} // namespace

bool RangeHistory::Less::operator()(const Range& left, const Range& right) const
{
    return keyOf(left) < keyOf(right);
}
