// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_HTTP_HISTORY_H
#define VIGIL_AGENT_HTTP_HISTORY_H

#include <map>
#include <vector>

#include "agent/checks/CheckList.h"
#include "agent/core/Clock.h"
#include "agent/core/Timer.h"

namespace agent {

/// The values of metrics during the last hour, in memory: one sample of each metric every 20 seconds.
///
/// Of more than maxSeries metrics the first in the order of their numbers have a history. All samples
/// together take at most 8 MB. A round of samples is taken in small steps, so managers do not wait for it.
///
/// Ownership: checks and clock must outlive it.
class History
{
public:
    static constexpr qint64 intervalMs = 20'000;
    static constexpr int samples = 180;
    static constexpr size_t maxSeries = 10'000;

    History(const CheckList& checks, Clock& clock);

    /// Takes samples from now on.
    void start();

    /// The samples, the last one at the end. NaN where there was no value. Empty without a history.
    std::vector<float> valuesOf(const CheckList::MetricKey& key) const;

    size_t size() const { return m_series.size(); }

private:
    struct Series
    {
        std::vector<float> values; // a ring: the sample of round n is at n modulo samples
        qint64 lastRound = 0;
    };

    void startRound();
    void step();
    void add(const Metric& metric);
    void dropOld();

    const CheckList& m_checks;
    std::map<CheckList::MetricKey, Series> m_series;
    qint64 m_round = 0;
    size_t m_visited = 0; // metrics in this round
    CheckList::MetricKey m_last = {0, 0};
    Timer m_rounds;
    Timer m_steps;
};

} // namespace agent

#endif
