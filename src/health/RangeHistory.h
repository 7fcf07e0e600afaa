// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HEALTH_RANGEHISTORY_H
#define VIGIL_HEALTH_RANGEHISTORY_H

#include <map>
#include <string>

#include <vigil/Range.h>

/// A range of a metric and all earlier ones.
///
/// The metric's getters return references, and the application may still read one while a manager replaces
/// the range on the client thread. So a range never changes: a new one is added, and the earlier ones stay.
/// Equal ranges are one object. Each has its text beside it, because every update publishes it.
///
/// Threads: the caller holds the metric's lock; the objects behind current() are read without it.
class RangeHistory
{
public:
    RangeHistory() { set(vigil::Range::CreateNoLimit()); }

    const vigil::Range& current() const { return m_current->first; }
    const std::string& currentText() const { return m_current->second; }
    void set(const vigil::Range& range) { m_current = m_ranges.try_emplace(range, range.toString()).first; }

private:
    /// Compares bounds bit by bit, because NaN has no order.
    struct Less
    {
        bool operator()(const vigil::Range& left, const vigil::Range& right) const;
    };

    using Ranges = std::map<vigil::Range, std::string, Less>;

    Ranges m_ranges;
    Ranges::const_iterator m_current;
};

#endif
