// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/testing/PublishedTable.h>

#include <algorithm>
#include <utility>

#include "testing/Identifier.h"

namespace vigil::test {

namespace {

/// A check with its metrics by name. Metrics may be published before their check and withdrawn after it.
struct Draft
{
    bool hasRow = false;
    PublishedCheck check;
    std::map<std::string, PublishedMetric> metrics;
};

using Drafts = std::map<std::pair<std::string, std::string>, Draft>;

HealthStatus statusOf(const PublishedCell& cell)
{
    return static_cast<HealthStatus>(cell.number);
}

void readCheck(unsigned int column, const PublishedCell& cell, Draft& draft)
{
    draft.hasRow = true;
    if (column == 3)
        draft.check.status = statusOf(cell);
    else
        draft.check.summary = cell.text;
}

void readMetric(unsigned int column, const PublishedCell& cell, PublishedMetric& metric)
{
    switch (column) {
    case 2:
        metric.unit = cell.text;
        break;
    case warningColumn:
        metric.warningRange = cell.text;
        break;
    case criticalColumn:
        metric.criticalRange = cell.text;
        break;
    default:
        metric.acceptsRanges = cell.number == 1;
    }
}

void readResult(unsigned int column, const PublishedCell& cell, PublishedMetric& metric)
{
    if (column == 1)
        metric.status = statusOf(cell);
    else
        metric.summary = cell.text;
}

void read(const CellPlace& place, const PublishedCell& cell, Drafts& drafts)
{
    Draft& draft = drafts[{place.row[0], place.row[1]}];
    if (place.table == checkTable)
        readCheck(place.column, cell, draft);
    else if (place.table == functionTable)
        draft.check.hasFunctions = true;
    else if (place.table == metricTable)
        readMetric(place.column, cell, draft.metrics[place.row[2]]);
    else if (place.table == resultTable)
        readResult(place.column, cell, draft.metrics[place.row[2]]);
    else if (place.column == 2) // all else of a value is in the other tables, too
        draft.metrics[place.row[2]].value = cell.text;
}

} // namespace

const PublishedMetric* PublishedCheck::metric(const std::string& name) const
{
    const auto found = std::find_if(metrics.begin(), metrics.end(),
                                    [&](const PublishedMetric& each) { return each.name == name; });
    return found == metrics.end() ? nullptr : &*found;
}

PublishedTable::PublishedTable(Cells cells, int connections)
    : m_cells(std::move(cells)), m_connections(connections)
{
    Drafts drafts;
    for (const auto& cell : m_cells) {
        const CellPlace place = placeOf(cell.first);
        if (place.table != 0)
            read(place, cell.second, drafts);
    }
    for (auto& each : drafts) {
        Draft& draft = each.second;
        if (!draft.hasRow)
            continue;
        draft.check.firstKey = each.first.first;
        draft.check.secondKey = each.first.second;
        for (auto& metric : draft.metrics) {
            metric.second.name = metric.first;
            draft.check.metrics.push_back(std::move(metric.second));
        }
        m_checks.push_back(std::move(draft.check));
    }
}

const PublishedCheck* PublishedTable::check(const std::string& firstKey, const std::string& secondKey) const
{
    const auto found = std::find_if(m_checks.begin(), m_checks.end(), [&](const PublishedCheck& each) {
        return each.firstKey == firstKey && each.secondKey == secondKey;
    });
    return found == m_checks.end() ? nullptr : &*found;
}

const PublishedCell* PublishedTable::cell(const std::string& identifier) const
{
    const auto found = m_cells.find(identifier);
    return found == m_cells.end() ? nullptr : &found->second;
}

} // namespace vigil::test
