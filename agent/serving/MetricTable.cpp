// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/MetricTable.h"

#include <cmath>
#include <limits>

#include "agent/checks/RangeBounds.h"
#include "agent/checks/ReadableText.h"
#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

// The arcs in the MIB, and its names without "vigilAgent".
constexpr unsigned int metricTableArc = 5;
enum MetricColumn : unsigned int {
    MetricName = 2,
    MetricStatus,
    MetricSeverity,
    MetricValue,
    MetricMilli,
    MetricMilliValid,
    MetricUnit,
    MetricWarningLower,
    MetricWarningUpper,
    MetricWarningInverse,
    MetricCriticalLower,
    MetricCriticalUpper,
    MetricCriticalInverse
};

/// The value times 1000, if that is an Integer32.
std::optional<int> milliOf(const std::string& value)
{
    bool isNumber = false;
    const double milli = std::round(QByteArray::fromStdString(value).toDouble(&isNumber) * 1000);
    const bool fits = isNumber && milli >= std::numeric_limits<int>::min() &&
                      milli <= std::numeric_limits<int>::max(); // false for NaN
    return fits ? std::optional<int>(static_cast<int>(milli)) : std::nullopt;
}

void putString(netsnmp_variable_list* varbind, const std::string& text)
{
    putText(varbind, QByteArray::fromStdString(readableText(text, maxAdminString)));
}

void putInteger(netsnmp_variable_list* varbind, int number)
{
    putValue(varbind, number);
}

/// A TruthValue
void putTruth(netsnmp_variable_list* varbind, bool isTrue)
{
    putInteger(varbind, isTrue ? 1 : 2);
}

/// columns is the column of the lower bound; those of the upper bound and of the mode follow.
void putRange(netsnmp_variable_list* varbind, unsigned int column, unsigned int columns,
              const std::string& range)
{
    const RangeBounds bounds = boundsOf(range);
    if (column == columns)
        putString(varbind, bounds.lower);
    else if (column == columns + 1)
        putString(varbind, bounds.upper);
    else
        putTruth(varbind, bounds.isInverse);
}

void putColumn(netsnmp_variable_list* varbind, unsigned int column, const Metric& metric)
{
    switch (column) {
    case MetricName:
        return putString(varbind, metric.fullName);
    case MetricStatus:
        return putInteger(varbind, metric.status);
    case MetricSeverity:
        return putInteger(varbind, metric.severity());
    case MetricValue:
        return putString(varbind, metric.value);
    case MetricMilli:
        return putInteger(varbind, milliOf(metric.value).value_or(0));
    case MetricMilliValid:
        return putTruth(varbind, milliOf(metric.value).has_value());
    case MetricUnit:
        return putString(varbind, metric.unit);
    default:
        return column < MetricCriticalLower
                   ? putRange(varbind, column, MetricWarningLower, metric.warningRange)
                   : putRange(varbind, column, MetricCriticalLower, metric.criticalRange);
    }
}

} // namespace

MetricTable::MetricTable(const CheckList& checks)
    : ReadOnlyTable("vigilAgentMetricTable", below(agentMibRoot(), {metricTableArc}), MetricName,
                    MetricCriticalInverse),
      m_checks(checks)
{}

std::optional<ObjectId> MetricTable::nextRow(const ObjectId& after) const
{
    const std::optional<CheckList::MetricKey> key =
        m_checks.metricAfter({after.empty() ? 0 : after.front(), after.size() < 2 ? 0 : after[1]});
    return key ? std::optional<ObjectId>(ObjectId{key->first, key->second}) : std::nullopt;
}

bool MetricTable::put(netsnmp_variable_list* varbind, unsigned int column, const ObjectId& row) const
{
    const std::optional<Metric> metric =
        row.size() == 2 ? m_checks.findMetric({row[0], row[1]}) : std::nullopt;
    if (metric)
        putColumn(varbind, column, *metric);
    return metric.has_value();
}

} // namespace agent
