// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/History.h"

#include <cmath>
#include <limits>
#include <utility>

namespace agent {

namespace {

constexpr int metricsInStep = 50; // about half a millisecond
constexpr qint64 pauseMs = 5;

constexpr float noValue = std::numeric_limits<float>::quiet_NaN();

float numberIn(const std::string& text)
{
    bool isNumber = false;
    const float value = QByteArray::fromStdString(text).toFloat(&isNumber);
    return isNumber ? value : noValue;
}

size_t placeOf(qint64 round)
{
    return static_cast<size_t>(round % History::samples);
}

} // namespace

History::History(const CheckList& checks, Clock& clock, UserOf userOf)
    : m_checks(checks),
      m_userOf(std::move(userOf)),
      m_rounds(clock, [this] { startRound(); }),
      m_steps(clock, [this] { step(); })
{}

void History::start()
{
    m_rounds.startRepeating(intervalMs);
    startRound();
}

void History::startRound()
{
    ++m_round;
    dropOld();
    m_steps.startOnce(0);
}

void History::step()
{
    for (int count = 0; count < metricsInStep; ++count) {
        const std::optional<CheckList::MetricKey> key = m_checks.metricAfter(m_last);
        m_last = key.value_or(CheckList::MetricKey(0, 0));
        if (!key)
            return;
        add(*key);
    }
    m_steps.startOnce(pauseMs);
}

void History::add(const CheckList::MetricKey& key)
{
    const CheckList::Sample sample = m_checks.sampleOf(key);
    const float value = numberIn(sample.value);
    if (std::isnan(value) && m_series.count(key) == 0)
        return; // a metric without numbers
    Series* series = seriesFor(key, {m_userOf(sample.application), sample.application});
    if (!series)
        return;
    while (++series->lastRound < m_round)
        series->values[placeOf(series->lastRound)] = noValue;
    series->lastRound = m_round; // also if a long round visits it twice
    series->values[placeOf(m_round)] = value;
}

/// Null if there is no room. The application of a metric changes when it restarts.
History::Series* History::seriesFor(const CheckList::MetricKey& key, const SeriesShares::Holder& holder)
{
    const auto found = m_series.find(key);
    if (found == m_series.end() && m_series.size() >= maxSeries && !makeRoomFor(holder))
        return nullptr;
    if (found != m_series.end())
        m_shares.remove(key, found->second.holder);
    Series& series = m_series[key];
    if (series.values.empty())
        series = {std::vector<float>(samples, noValue), m_round - 1, holder};
    series.holder = holder;
    m_shares.add(key, holder);
    return &series;
}

bool History::makeRoomFor(const SeriesShares::Holder& holder)
{
    const std::optional<CheckList::MetricKey> victim = m_shares.victimFor(holder);
    if (victim)
        drop(m_series.find(*victim));
    return victim.has_value();
}

History::AllSeries::iterator History::drop(AllSeries::iterator series)
{
    m_shares.remove(series->first, series->second.holder);
    return m_series.erase(series);
}

void History::dropOld()
{
    for (auto it = m_series.begin(); it != m_series.end();)
        it = m_round - it->second.lastRound > samples ? drop(it) : std::next(it);
}

std::vector<float> History::valuesOf(const CheckList::MetricKey& key) const
{
    const auto found = m_series.find(key);
    if (found == m_series.end())
        return {};
    std::vector<float> values;
    for (qint64 round = m_round - samples + 1; round <= m_round; ++round)
        values.push_back(round > 0 && round <= found->second.lastRound ? found->second.values[placeOf(round)]
                                                                       : noValue);
    return values;
}

} // namespace agent
