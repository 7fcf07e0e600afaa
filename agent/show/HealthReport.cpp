// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/show/HealthReport.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <vector>

#include "agent/checks/ReadableText.h"
#include "agent/checks/Severity.h"

namespace agent {

namespace {

// The arcs in VIGIL-AGENT-MIB. The files that serve them have these names, too.
namespace mib {
constexpr unsigned int connectionTable = 2;
enum ConnectionColumn : unsigned int { ConnectionState = 4, ConnectionCells = 6, ConnectionName = 13 };
constexpr unsigned int healthScalars = 3;
enum HealthScalar : unsigned int { ChecksOk = 2, ChecksWarning, ChecksCritical, ChecksUnknown, WorstStatus };
constexpr unsigned int checkTable = 4;
enum CheckColumn : unsigned int { CheckName = 4, CheckStatus, CheckSeverity, CheckSummary, CheckSince };
constexpr unsigned int metricTable = 5;
enum MetricColumn : unsigned int { MetricName = 2, MetricStatus, MetricValue = 5, MetricUnit = 8 };

constexpr std::int64_t isConnected = 1; // as ConnectionState
} // namespace mib

/// A table's rows by their index.
class Table
{
public:
    Table(const ServedObjects& objects, unsigned int arc)
        : m_objects(objects), m_entry(below(agentMibRoot(), {arc, 1}))
    {}

    /// The rows with this column whose index starts with start.
    std::vector<ObjectId> rows(unsigned int column, const ObjectId& start = {}) const
    {
        std::vector<ObjectId> rows;
        ObjectId first = below(m_entry, {column});
        const auto indexAt = static_cast<std::ptrdiff_t>(first.size());
        first.insert(first.end(), start.begin(), start.end());
        for (auto object = m_objects.lower_bound(first);
             object != m_objects.end() && isInTree(first, object->first); ++object)
            rows.emplace_back(object->first.begin() + indexAt, object->first.end());
        return rows;
    }

    std::int64_t number(unsigned int column, const ObjectId& row) const { return value(column, row).number; }

    QString text(unsigned int column, const ObjectId& row) const
    {
        return QString::fromStdString(readableText(value(column, row).octets, maxAdminString));
    }

    /// A DateAndTime
    QString time(unsigned int column, const ObjectId& row) const;

private:
    ServedValue value(unsigned int column, const ObjectId& row) const
    {
        ObjectId id = below(m_entry, {column});
        id.insert(id.end(), row.begin(), row.end());
        const auto found = m_objects.find(id);
        return found == m_objects.end() ? ServedValue() : found->second;
    }

    const ServedObjects& m_objects;
    const ObjectId m_entry;
};

QString Table::time(unsigned int column, const ObjectId& row) const
{
    const std::string octets = value(column, row).octets;
    if (octets.size() < 8)
        return {};
    const auto at = [&](std::size_t index) { return static_cast<unsigned char>(octets[index]); };
    const QDateTime time(QDate(at(0) * 256 + at(1), at(2), at(3)), QTime(at(4), at(5), at(6)), Qt::UTC);
    return time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss 'UTC'"));
}

std::int64_t scalar(const ServedObjects& objects, unsigned int arc)
{
    const auto found = objects.find(below(agentMibRoot(), {mib::healthScalars, arc, 0}));
    return found == objects.end() ? 0 : found->second.number;
}

QString statusWord(std::int64_t status)
{
    switch (status) {
    case status::ok:
        return QStringLiteral("OK");
    case status::warning:
        return QStringLiteral("WARNING");
    case status::critical:
        return QStringLiteral("CRITICAL");
    default:
        return QStringLiteral("UNKNOWN");
    }
}

/// In a column of its own.
QString statusColumn(std::int64_t status)
{
    constexpr int width = 10;
    return statusWord(status).leftJustified(width);
}

QString headline(const ServedObjects& objects)
{
    QStringList counts;
    for (const auto& [arc, name] :
         {std::pair(mib::ChecksCritical, "critical"), std::pair(mib::ChecksWarning, "warning"),
          std::pair(mib::ChecksUnknown, "unknown"), std::pair(mib::ChecksOk, "ok")})
        counts += QStringLiteral("%1 %2").arg(scalar(objects, arc)).arg(QLatin1String(name));
    return QStringLiteral("%1 - %2\n")
        .arg(statusWord(scalar(objects, mib::WorstStatus)), counts.join(QStringLiteral(", ")));
}

/// Of one check. Its name is in front of the metric's, see Metric::fullName.
QString metricLines(const Table& metrics, const ObjectId& check, const QString& checkName)
{
    QString lines;
    for (const ObjectId& metric : metrics.rows(mib::MetricName, check)) {
        QString name = metrics.text(mib::MetricName, metric);
        if (name.startsWith(checkName + QLatin1Char('/')))
            name.remove(0, checkName.size() + 1);
        lines += QStringLiteral("  ") + statusColumn(metrics.number(mib::MetricStatus, metric)) + name;
        if (const QString value = metrics.text(mib::MetricValue, metric); !value.isEmpty())
            lines += QStringLiteral(" = ") +
                     (value + QLatin1Char(' ') + metrics.text(mib::MetricUnit, metric)).trimmed();
        lines += QLatin1Char('\n');
    }
    return lines;
}

QString checkLines(const ServedObjects& objects)
{
    const Table checks(objects, mib::checkTable);
    const Table metrics(objects, mib::metricTable);
    std::vector<ObjectId> rows = checks.rows(mib::CheckStatus);
    std::stable_sort(rows.begin(), rows.end(), [&](const ObjectId& left, const ObjectId& right) {
        return checks.number(mib::CheckSeverity, left) > checks.number(mib::CheckSeverity, right);
    });
    QString lines;
    for (const ObjectId& check : rows) {
        const QString name = checks.text(mib::CheckName, check);
        lines += statusColumn(checks.number(mib::CheckStatus, check)) +
                 QStringLiteral("%1 since %2: %3\n")
                     .arg(name, checks.time(mib::CheckSince, check), checks.text(mib::CheckSummary, check)) +
                 metricLines(metrics, check, name);
    }
    return lines.isEmpty() ? QStringLiteral("No application has published a health check.\n") : lines;
}

QString applicationLines(const ServedObjects& objects)
{
    const Table connections(objects, mib::connectionTable);
    QString lines;
    for (const ObjectId& connection : connections.rows(mib::ConnectionState))
        lines += QStringLiteral("%1 is %2, %3 cells\n")
                     .arg(connections.text(mib::ConnectionName, connection),
                          connections.number(mib::ConnectionState, connection) == mib::isConnected
                              ? QStringLiteral("connected")
                              : QStringLiteral("lost"))
                     .arg(connections.number(mib::ConnectionCells, connection));
    return lines.isEmpty() ? QStringLiteral("No application is connected.\n") : lines;
}

} // namespace

QString healthReport(const ServedObjects& objects)
{
    return headline(objects) + QLatin1Char('\n') + checkLines(objects) + QLatin1Char('\n') +
           applicationLines(objects);
}

} // namespace agent
