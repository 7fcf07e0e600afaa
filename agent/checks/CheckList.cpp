// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/checks/CheckList.h"

#include <algorithm>
#include <tuple>

#include "agent/checks/ReadableText.h"
#include "agent/checks/RowTexts.h"

namespace agent {

using healthTable::Column;

namespace {

// Views cut longer texts, so that showing a check or metric takes a bounded time.
constexpr size_t maxSummary = 4096;
constexpr size_t maxText = 1024; // of a value, a unit or a range

// Tables and columns of VIGIL-MIB.
constexpr unsigned int entryArc = 1;
constexpr unsigned int perfDataTable = 4;
constexpr unsigned int perfDataValue = 2;

/// Where a table has the unit and the ranges of a metric.
struct UnitAndRanges
{
    unsigned int table;
    unsigned int unit;
    unsigned int warning;
    unsigned int critical;
};
constexpr UnitAndRanges present = {2, 2, 3, 4};                  // vigilMetricTable
constexpr UnitAndRanges ofLastUpdate = {perfDataTable, 3, 4, 5}; // with the value

ObjectId cellIn(unsigned int table, unsigned int column, const ObjectId& row)
{
    ObjectId cell = below(vigilMibRoot(), {table, entryArc, column});
    cell.insert(cell.end(), row.begin(), row.end());
    return cell;
}

std::string trimmed(const std::string& text)
{
    return QString::fromStdString(text).trimmed().toStdString();
}

} // namespace

CheckList::CheckList(const ServedCells& cells, const Mutes& mutes, const Clock& clock)
    : m_store(cells.store()), m_mutes(mutes), m_clock(clock)
{
    connect(&cells, &ServedCells::statusWritten, this, &CheckList::handleStatusWritten);
    connect(&cells, &ServedCells::summaryWritten, this, &CheckList::handleSummaryWritten);
    connect(&cells, &ServedCells::checkCovered, this, &CheckList::handleServed);
    connect(&cells, &ServedCells::checkRestored, this, &CheckList::handleServed);
    connect(&cells, &ServedCells::checkRemoved, this, &CheckList::handleRemoved);
    connect(&cells, &ServedCells::resultAdded, this, &CheckList::handleResultAdded);
    connect(&cells, &ServedCells::resultRemoved, this, &CheckList::handleResultRemoved);
    connect(&mutes, &Mutes::changed, this, &CheckList::reportIfListed);
}

// --- Questions

std::optional<Check> CheckList::find(unsigned int number) const
{
    const auto found = m_byNumber.find(number);
    return found == m_byNumber.end() ? std::nullopt : std::optional<Check>(describe(*found->second));
}

std::optional<Check> CheckList::next(unsigned int number) const
{
    const std::optional<unsigned int> found = numberAfter(number);
    return found ? find(*found) : std::nullopt;
}

std::optional<unsigned int> CheckList::numberAfter(unsigned int number) const
{
    const auto found = m_byNumber.upper_bound(number);
    return found == m_byNumber.end() ? std::nullopt : std::optional<unsigned int>(found->first);
}

std::optional<Metric> CheckList::findMetric(const MetricKey& key) const
{
    const auto found = m_metrics.find(key);
    return found == m_metrics.end() ? std::nullopt : std::optional<Metric>(describe(key, *found->second));
}

std::optional<Metric> CheckList::nextMetric(const MetricKey& key) const
{
    const std::optional<MetricKey> found = metricAfter(key);
    return found ? findMetric(*found) : std::nullopt;
}

std::optional<CheckList::MetricKey> CheckList::metricAfter(const MetricKey& key) const
{
    const auto found = m_metrics.upper_bound(key);
    return found == m_metrics.end() ? std::nullopt : std::optional<MetricKey>(found->first);
}

std::vector<Metric> CheckList::metricsOf(unsigned int check) const
{
    std::vector<Metric> metrics;
    for (auto it = m_metrics.lower_bound({check, 0}); it != m_metrics.end() && it->first.first == check; ++it)
        metrics.push_back(describe(it->first, *it->second));
    return metrics;
}

CheckList::Sample CheckList::sampleOf(const MetricKey& key) const
{
    const auto found = m_metrics.find(key);
    if (found == m_metrics.end())
        return {};
    const Cell* cell = m_store.find(cellIn(perfDataTable, perfDataValue, *found->second));
    const std::string* text = cell ? std::get_if<std::string>(&cell->served()) : nullptr;
    return {text ? readableText(*text, maxText) : std::string(), cell ? cell->owner : 0};
}

int CheckList::worstStatus() const
{
    const auto worst = std::find_if(status::bySeverity.rbegin(), status::bySeverity.rend(),
                                    [this](int each) { return count(each) > 0; });
    return worst == status::bySeverity.rend() ? status::unknown : *worst;
}

Check CheckList::describe(const Entries::value_type& check) const
{
    const auto& [id, entry] = check;
    const std::vector<std::string> keys = textsOf(id);
    const Cell* status = m_store.find(healthTable::cellOf(Column::Status, id));
    Check described;
    described.number = entry.number;
    described.id = id;
    described.application = status ? status->owner : 0;
    described.firstKey = keys.empty() ? std::string() : keys.front();
    described.secondKey = keys.size() < 2 ? std::string() : keys[1];
    described.name = nameOf(keys);
    described.status = entry.status;
    described.summary = text(healthTable::cellOf(Column::Summary, id), maxSummary);
    described.since = entry.since;
    described.lastUpdate = entry.lastUpdate;
    described.ageMs = entry.updates > 0 ? m_clock.elapsedMs() - entry.lastUpdateMs : -1;
    described.updates = entry.updates;
    described.mutedUntil = m_mutes.untilOf(id);
    if (!described.mutedUntil.isNull())
        described.mutedMs = std::max<qint64>(m_clock.nowUtc().msecsTo(described.mutedUntil), 1);
    return described;
}

Metric CheckList::describe(const MetricKey& key, const ObjectId& metric) const
{
    const std::vector<std::string> texts = textsOf(metric);
    const Cell* status = m_store.find(resultTable().cellOf(Column::Status, metric));
    const int* number = status ? std::get_if<int>(&status->served()) : nullptr;
    Metric described;
    std::tie(described.check, described.number) = key;
    described.id = metric;
    described.name = texts.empty() ? std::string() : texts.back();
    described.fullName = nameOf(texts);
    described.status = number ? *number : status::unknown;
    described.summary = text(resultTable().cellOf(Column::Summary, metric), maxSummary);
    described.value = text(cellIn(perfDataTable, perfDataValue, metric), maxText);
    const UnitAndRanges& columns = described.value.empty() ? present : ofLastUpdate;
    described.unit = trimmed(text(cellIn(columns.table, columns.unit, metric), maxText));
    described.warningRange = text(cellIn(columns.table, columns.warning, metric), maxText);
    described.criticalRange = text(cellIn(columns.table, columns.critical, metric), maxText);
    return described;
}

int CheckList::servedStatus(const ObjectId& check) const
{
    const Cell* cell = m_store.find(healthTable::cellOf(Column::Status, check));
    const int* number = cell ? std::get_if<int>(&cell->served()) : nullptr;
    return number ? *number : status::unknown;
}

std::string CheckList::text(const ObjectId& cell, size_t maxBytes) const
{
    const Cell* found = m_store.find(cell);
    const std::string* text = found ? std::get_if<std::string>(&found->served()) : nullptr;
    return text ? readableText(*text, maxBytes) : std::string();
}

// --- Events of checks

void CheckList::handleStatusWritten(const ObjectId& check, int status)
{
    Entries::value_type& row = entryOf(check);
    ++row.second.updates;
    row.second.lastUpdate = m_clock.nowUtc();
    row.second.lastUpdateMs = m_clock.elapsedMs();
    setStatus(row, status);
    m_latest = &row;
    report(row.second);
}

void CheckList::handleSummaryWritten(const ObjectId& check)
{
    if (m_latest && m_latest->first == check)
        return report(m_latest->second); // as the library does: right after the status, and no look-up
    reportIfListed(check);
}

void CheckList::reportIfListed(const ObjectId& check)
{
    const auto entry = m_checks.find(check);
    if (entry != m_checks.end() && entry->second.isListed)
        report(entry->second);
}

void CheckList::handleServed(const ObjectId& check)
{
    Entries::value_type& row = entryOf(check);
    setStatus(row, servedStatus(check));
    report(row.second);
}

void CheckList::setStatus(Entries::value_type& check, int status)
{
    Entry& entry = check.second;
    if (entry.isListed && entry.status == status)
        return;
    if (entry.isListed)
        --m_counts.at(static_cast<size_t>(entry.status));
    else
        m_byNumber.emplace(entry.number, &check);
    entry.isListed = true;
    entry.status = status;
    entry.since = m_clock.nowUtc();
    ++m_counts.at(static_cast<size_t>(status));
    m_lastChange = entry.since;
}

void CheckList::handleRemoved(const ObjectId& check)
{
    const auto entry = m_checks.find(check);
    if (entry == m_checks.end() || !entry->second.isListed)
        return;
    const unsigned int number = entry->second.number;
    m_latest = nullptr;
    unlist(entry->second);
    dropIfEmpty(entry);
    emit removed(number);
}

void CheckList::unlist(Entry& entry)
{
    --m_counts.at(static_cast<size_t>(entry.status));
    m_byNumber.erase(entry.number);
    Entry unlisted;
    unlisted.number = entry.number;
    unlisted.metrics = entry.metrics;
    entry = unlisted;
    m_lastChange = m_clock.nowUtc();
    ++m_revision;
}

// --- Events of metrics

void CheckList::handleResultAdded(const ObjectId& metric)
{
    Entry& entry = entryOf(checkOf(metric)).second;
    const unsigned int check = entry.number;
    const unsigned int number = m_metricNumbers.take(metric, [this, check](unsigned int each) {
        return m_metrics.count({check, each}) > 0;
    });
    const auto [key, isNew] = m_metricKeys.emplace(metric, MetricKey(check, number));
    if (!isNew)
        return;
    m_metrics.emplace(key->second, &key->first);
    ++entry.metrics;
    ++m_revision;
}

void CheckList::handleResultRemoved(const ObjectId& metric)
{
    const auto key = m_metricKeys.find(metric);
    if (key == m_metricKeys.end())
        return;
    m_metricNumbers.release(metric, key->second.second);
    m_metrics.erase(key->second);
    m_metricKeys.erase(key);
    const auto entry = m_checks.find(checkOf(metric));
    --entry->second.metrics;
    dropIfEmpty(entry);
    ++m_revision;
}

// --- Entries

CheckList::Entries::value_type& CheckList::entryOf(const ObjectId& check)
{
    const auto [entry, isNew] = m_checks.try_emplace(check);
    if (isNew)
        entry->second.number =
            m_checkNumbers.take(check, [this](unsigned int number) { return isUsed(number); });
    return *entry;
}

bool CheckList::isUsed(unsigned int number) const
{
    const auto metric = m_metrics.lower_bound({number, 0});
    return m_byNumber.count(number) > 0 || (metric != m_metrics.end() && metric->first.first == number);
}

void CheckList::dropIfEmpty(Entries::iterator entry)
{
    if (entry->second.isListed || entry->second.metrics > 0)
        return;
    m_checkNumbers.release(entry->first, entry->second.number);
    m_checks.erase(entry);
}

void CheckList::report(const Entry& entry)
{
    ++m_revision;
    emit changed(entry.number);
}

} // namespace agent
