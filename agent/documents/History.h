// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_HISTORY_H
#define VIGIL_AGENT_DOCUMENTS_HISTORY_H

#include <functional>
#include <map>
#include <vector>

#include "agent/checks/CheckList.h"
#include "agent/core/Clock.h"
#include "agent/core/Timer.h"
#include "agent/core/User.h"
#include "agent/documents/SeriesShares.h"

namespace agent {

/// The values of metrics during the last hour, in memory: one sample of each metric every 20 seconds.
///
/// There is room for maxSeries metrics, which users and applications share fairly (SeriesShares). All samples
/// together take at most 8 MB. A round of samples is taken in small steps, so managers do not wait for it. If
/// there are too many metrics for one round, it goes on in the next.
///
/// Ownership: checks and clock must outlive it.
class History
{
public:
    static constexpr qint64 intervalMs = 20'000;
    static constexpr int samples = 180;
    static constexpr size_t maxSeries = 10'000;

    using UserOf = std::function<User(ApplicationId application)>;

    History(const CheckList& checks, Clock& clock, UserOf userOf);

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
        SeriesShares::Holder holder;
    };
    using AllSeries = std::map<CheckList::MetricKey, Series>;

    void startRound();
    void step();
    void add(const CheckList::MetricKey& key);
    Series* seriesFor(const CheckList::MetricKey& key, const SeriesShares::Holder& holder);
    bool makeRoomFor(const SeriesShares::Holder& holder);
    AllSeries::iterator drop(AllSeries::iterator series);
    void dropOld();

    const CheckList& m_checks;
    const UserOf m_userOf;
    AllSeries m_series;
    SeriesShares m_shares;
    qint64 m_round = 0;
    CheckList::MetricKey m_last = {0, 0}; // the last one visited
    Timer m_rounds;
    Timer m_steps;
};

} // namespace agent

#endif
