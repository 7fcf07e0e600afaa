// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/http/History.h"

#include <limits>

namespace agent {

namespace {

constexpr int metricsInStep = 50; // about half a millisecond
constexpr qint64 pauseMs = 5;

constexpr float noValue = std::numeric_limits<float>::quiet_NaN();

float valueOf(const Metric& metric)
{
    bool isNumber = false;
    const float value = QByteArray::fromStdString(metric.value).toFloat(&isNumber);
    return isNumber ? value : noValue;
}

size_t placeOf(qint64 round)
{
    return static_cast<size_t>(round % History::samples);
}

} // namespace

History::History(const CheckList& checks, Clock& clock)
    : m_checks(checks), m_rounds(clock, [this] { startRound(); }), m_steps(clock, [this] { step(); })
{}

void History::start()
{
    m_rounds.startRepeating(intervalMs);
    startRound();
}

/// A round that is not complete yet ends here: the machine is overloaded.
void History::startRound()
{
    ++m_round;
    m_visited = 0;
    m_last = {0, 0};
    dropOld();
    m_steps.startOnce(0);
}

void History::step()
{
    for (int count = 0; count < metricsInStep; ++count) {
        const std::optional<Metric> metric =
            m_visited < maxSeries ? m_checks.nextMetric(m_last) : std::nullopt;
        if (!metric)
            return;
        ++m_visited;
        m_last = {metric->check, metric->number};
        add(*metric);
    }
    m_steps.startOnce(pauseMs);
}

void History::add(const Metric& metric)
{
    const float value = valueOf(metric);
    const auto found = m_series.find({metric.check, metric.number});
    if (value != value && found == m_series.end())
        return; // a metric without numbers
    if (found == m_series.end() && m_series.size() >= maxSeries)
        return;
    Series& series = found == m_series.end() ? m_series[{metric.check, metric.number}] : found->second;
    if (series.values.empty())
        series = {std::vector<float>(samples, noValue), m_round - 1};
    while (++series.lastRound < m_round)
        series.values[placeOf(series.lastRound)] = noValue;
    series.values[placeOf(m_round)] = value;
}

void History::dropOld()
{
    for (auto it = m_series.begin(); it != m_series.end();)
        it = m_round - it->second.lastRound > samples ? m_series.erase(it) : std::next(it);
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
