// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/cells/UpdateRhythm.h"

#include <algorithm>

namespace agent {

namespace {

constexpr qint64 oneUpdateMs = 1'000;
constexpr qint64 leastSilenceMs = 30'000;
constexpr qint64 mostUneven = 3;
constexpr qint64 missedIntervals = 4;

} // namespace

void UpdateRhythm::update(qint64 nowMs)
{
    if (m_lastMs) {
        const qint64 interval = nowMs - *m_lastMs;
        if (interval < oneUpdateMs)
            return;
        m_intervals[m_count++ % intervals] = interval;
    }
    m_lastMs = nowMs;
}

std::optional<qint64> UpdateRhythm::longestSilenceMs() const
{
    if (m_count < intervals)
        return std::nullopt;
    const auto [shortest, longest] = std::minmax_element(m_intervals.begin(), m_intervals.end());
    if (*longest > mostUneven * *shortest)
        return std::nullopt;
    return std::max(missedIntervals * *longest, leastSilenceMs);
}

} // namespace agent
