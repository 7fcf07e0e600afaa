// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "c/Support.h"

#include <cmath>
#include <cstring>

namespace c {

void writeText(const std::string& text, char* buffer, std::size_t* size)
{
    const std::size_t capacity = output(size);
    *size = text.size() + 1;
    if (!buffer)
        return;
    require(capacity >= *size, VIGIL_TOO_SMALL);
    std::memcpy(buffer, text.c_str(), *size);
}

vigil::Range toRange(const vigil_range* range)
{
    require(range != nullptr, VIGIL_NULL);
    switch (range->mode) {
    case VIGIL_RANGE_OFF:
        return vigil::Range::CreateNoLimit();
    case VIGIL_RANGE_UNSET:
        return {};
    case VIGIL_RANGE_NORMAL:
    case VIGIL_RANGE_INVERSE:
        break;
    default:
        throw Failure{VIGIL_BAD_VALUE};
    }
    require(!std::isnan(range->lower) && !std::isnan(range->upper), VIGIL_BAD_VALUE);
    return range->mode == VIGIL_RANGE_NORMAL ? vigil::Range::CreateRange(range->lower, range->upper)
                                             : vigil::Range::CreateInverseRange(range->lower, range->upper);
}

vigil_range fromRange(const vigil::Range& range)
{
    int mode = VIGIL_RANGE_OFF;
    if (range.isEnabled())
        mode = range.isInverse() ? VIGIL_RANGE_INVERSE : VIGIL_RANGE_NORMAL;
    else if (range.toString().empty())
        mode = VIGIL_RANGE_UNSET;
    return {mode, range.getLowerBound(), range.getUpperBound()};
}

} // namespace c
