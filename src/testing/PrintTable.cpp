// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/testing/PublishedTable.h>

#include <algorithm>
#include <array>
#include <ostream>

#include "testing/Identifier.h"

namespace vigil::test {

namespace {

constexpr std::size_t columns = 8;
using Line = std::array<std::string, columns>;

Line lineOf(const PublishedCheck& check)
{
    return {check.firstKey + '/' + check.secondKey, "", nameOf(check.status), "", "", "", "", check.summary};
}

Line lineOf(const PublishedMetric& metric)
{
    return {"",          metric.name,         nameOf(metric.status), metric.value,
            metric.unit, metric.warningRange, metric.criticalRange,  metric.summary};
}

/// The columns one below the other, the last one as it is.
void print(std::ostream& out, const std::vector<Line>& lines)
{
    std::array<std::size_t, columns> widths = {};
    for (const Line& line : lines)
        for (std::size_t i = 0; i < columns; ++i)
            widths[i] = (std::max)(widths[i], line[i].size());
    for (const Line& line : lines) {
        std::string text;
        for (std::size_t i = 0; i < columns; ++i)
            text += line[i] + std::string(i + 1 < columns ? widths[i] - line[i].size() + 2 : 0, ' ');
        out << '\n' << text.substr(0, text.find_last_not_of(' ') + 1);
    }
}

} // namespace

const char* nameOf(HealthStatus status)
{
    static constexpr const char* names[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
    const auto number = static_cast<unsigned int>(status);
    return number < 4 ? names[number] : "no status";
}

std::ostream& operator<<(std::ostream& out, const PublishedCell& cell)
{
    return cell.isText ? out << '"' << cell.text << '"' : out << cell.number;
}

std::ostream& operator<<(std::ostream& out, const PublishedMetric& metric)
{
    return out << "metric \"" << metric.name << "\": " << nameOf(metric.status) << ", value \""
               << metric.value << "\", unit \"" << metric.unit << "\", warning \"" << metric.warningRange
               << "\", critical \"" << metric.criticalRange << "\", \"" << metric.summary << '"';
}

std::ostream& operator<<(std::ostream& out, const PublishedCheck& check)
{
    return out << "check " << check.firstKey << '/' << check.secondKey << ": " << nameOf(check.status)
               << ", \"" << check.summary << "\", " << check.metrics.size() << " metrics";
}

std::ostream& operator<<(std::ostream& out, const PublishedTable& table)
{
    if (table.connections() == 0)
        return out << "nothing: no application is connected";
    if (table.cells().empty())
        return out << "nothing: the application is connected and has published nothing";
    std::vector<Line> lines = {
        {"check", "metric", "status", "value", "unit", "warning", "critical", "summary"}};
    for (const PublishedCheck& check : table.checks()) {
        lines.push_back(lineOf(check));
        for (const PublishedMetric& metric : check.metrics)
            lines.push_back(lineOf(metric));
    }
    if (lines.size() > 1)
        print(out, lines);
    for (const auto& cell : table.cells()) {
        if (placeOf(cell.first).table == 0)
            out << '\n' << cell.first << " = " << cell.second;
    }
    return out;
}

} // namespace vigil::test
