// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_RANGEHISTORY_H
#define VIGIL_HEALTH_RANGEHISTORY_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <vigil/Range.h>

/// A range of a metric and the earlier ones.
///
/// The metric's getters return references, and the application may still read one while a manager replaces
/// the range on the client thread. So a new range is added, and the earlier ones stay. An application may
/// also set a new range with every update. To bound the memory, each range after maxRanges overwrites the
/// oldest one; its object stays valid. Equal ranges are one object. Each has its text beside it, because
/// every update publishes it.
///
/// Threads: the caller holds the metric's lock; the objects behind current() are read without it.
class RangeHistory
{
public:
    static constexpr std::size_t maxRanges = 1000;

    RangeHistory() { set(vigil::Range::CreateNoLimit()); }

    const vigil::Range& current() const { return m_current->first; }
    const std::string& currentText() const { return m_current->second; }
    void set(const vigil::Range& range);

private:
    /// Compares bounds bit by bit, because NaN has no order.
    struct Less
    {
        bool operator()(const vigil::Range& left, const vigil::Range& right) const;
    };

    using Ranges = std::map<vigil::Range, std::string, Less>;

    Ranges::iterator add(const vigil::Range& range);
    Ranges::iterator overwriteOldest(const vigil::Range& range);

    Ranges m_ranges;
    std::vector<Ranges::iterator> m_places; // those before m_oldest are the newest
    std::size_t m_oldest = 0;
    Ranges::iterator m_current;
};

#endif
