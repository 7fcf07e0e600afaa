// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CELLS_UPDATERHYTHM_H
#define VIGIL_AGENT_CELLS_UPDATERHYTHM_H

#include <QtGlobal>

#include <array>
#include <cstddef>
#include <optional>

namespace agent {

/// Learns how often a check is updated, from its last ten intervals.
///
/// They are a rhythm if the longest is at most three times the shortest. Updates within a second of another
/// are one update, so a burst at the start of an application is no rhythm.
class UpdateRhythm
{
public:
    static constexpr size_t intervals = 10;

    /// An update at this moment.
    void update(qint64 nowMs);

    /// The next interval starts at this moment. What lies before is no interval, such as a restart.
    void restart(qint64 nowMs) { m_lastMs = nowMs; }

    /// How long a silence is too long: four times the longest interval, at least 30 seconds. Nothing without
    /// a rhythm.
    std::optional<qint64> longestSilenceMs() const;

private:
    std::optional<qint64> m_lastMs;
    std::array<qint64, intervals> m_intervals = {};
    size_t m_count = 0; // of intervals so far
};

} // namespace agent

#endif
