// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "health/RangeHistory.h"

#include <cstdint>
#include <cstring>
#include <tuple>
#include <utility>

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

void RangeHistory::set(const Range& range)
{
    const auto known = m_ranges.find(range);
    if (known != m_ranges.end())
        m_current = known;
    else
        m_current = m_places.size() < maxRanges ? add(range) : overwriteOldest(range);
}

RangeHistory::Ranges::iterator RangeHistory::add(const Range& range)
{
    m_places.reserve(m_places.size() + 1);
    const auto added = m_ranges.emplace(range, range.toString()).first;
    m_places.push_back(added);
    return added;
}

/// Not the current one: the application may just have asked for it.
RangeHistory::Ranges::iterator RangeHistory::overwriteOldest(const Range& range)
{
    std::string text = range.toString();
    if (m_places[m_oldest] == m_current)
        m_oldest = (m_oldest + 1) % maxRanges;
    auto node = m_ranges.extract(m_places[m_oldest]);
    node.key() = range;
    node.mapped() = std::move(text);
    const auto moved = m_ranges.insert(std::move(node)).position;
    m_places[m_oldest] = moved;
    m_oldest = (m_oldest + 1) % maxRanges;
    return moved;
}
