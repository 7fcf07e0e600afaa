// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/StatusReport.h"

#include <QDateTime>
#include <QJsonArray>

#include <algorithm>
#include <vector>

#include "vigilctl/JsonMember.h"
#include "vigilctl/Printable.h"

namespace vigilctl {

namespace {

constexpr const char* statusNames[] = {"ok", "warning", "critical", "unknown"};
constexpr const char* colours[] = {"32", "33", "31", "35"};

StatusReport::ExitCode codeOf(const QString& status)
{
    const auto* const found = std::find_if(std::begin(statusNames), std::end(statusNames),
                                           [&](const char* name) { return status == QLatin1String(name); });
    return found == std::end(statusNames)
               ? StatusReport::Unknown
               : static_cast<StatusReport::ExitCode>(found - std::begin(statusNames));
}

QString statusWord(const QString& status, bool isColoured)
{
    const QString word = QLatin1String(statusNames[codeOf(status)]);
    if (!isColoured)
        return word.toUpper();
    return QStringLiteral("\033[1;%1m%2\033[0m").arg(QLatin1String(colours[codeOf(status)]), word.toUpper());
}

QString durationText(qint64 seconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    if (seconds < minute)
        return QStringLiteral("%1 s").arg(std::max<qint64>(seconds, 0));
    if (seconds < hour)
        return QStringLiteral("%1 min").arg(seconds / minute);
    if (seconds < 2 * day)
        return QStringLiteral("%1 h").arg(seconds / hour);
    return QStringLiteral("%1 d").arg(seconds / day);
}

QDateTime timeOf(const QJsonObject& object, const char* name)
{
    return QDateTime::fromString(member(object, name), Qt::ISODate);
}

QString muteText(const QJsonObject& check, const QDateTime& now)
{
    const QDateTime until = timeOf(check, "mutedUntil");
    return until.isValid() ? QStringLiteral(", muted for another %1").arg(durationText(now.secsTo(until)))
                           : QString();
}

/// The checks with a problem or a mute.
std::vector<QJsonObject> problemsOf(const QJsonObject& document)
{
    std::vector<QJsonObject> problems;
    const QJsonArray checks = document[QLatin1String("checks")].toArray();
    for (const QJsonValue& each : checks) {
        const QJsonObject check = each.toObject();
        if (codeOf(member(check, "status")) != StatusReport::Ok || !member(check, "mutedUntil").isEmpty())
            problems.push_back(check);
    }
    std::stable_sort(problems.begin(), problems.end(), [](const QJsonObject& left, const QJsonObject& right) {
        return left[QLatin1String("severity")].toInt() > right[QLatin1String("severity")].toInt();
    });
    return problems;
}

} // namespace

bool StatusReport::isValid() const
{
    return m_document[QLatin1String("version")].toInt() == 1 && m_document[QLatin1String("checks")].isArray();
}

StatusReport::ExitCode StatusReport::exitCode() const
{
    return isValid() ? codeOf(member(m_document, "status")) : Unknown;
}

QString StatusReport::headline() const
{
    const QJsonObject counts = m_document[QLatin1String("counts")].toObject();
    QStringList parts;
    for (const char* name : {"critical", "warning", "unknown", "ok"})
        parts += QStringLiteral("%1 %2").arg(counts[QLatin1String(name)].toInt()).arg(QLatin1String(name));
    return QStringLiteral("%1: %2").arg(printable(member(m_document, "host")),
                                        parts.join(QStringLiteral(", ")));
}

QString StatusReport::text(bool isColoured) const
{
    QString text =
        QStringLiteral("%1 - %2\n").arg(statusWord(member(m_document, "status"), isColoured), headline());
    const QDateTime now = timeOf(m_document, "time");
    for (const QJsonObject& check : problemsOf(m_document))
        text += QStringLiteral("%1  %2, for %3%4: %5\n")
                    .arg(statusWord(member(check, "status"), isColoured), printable(member(check, "name")),
                         durationText(timeOf(check, "since").secsTo(now)), muteText(check, now),
                         printable(member(check, "summary")));
    const QJsonArray applications = m_document[QLatin1String("applications")].toArray();
    for (const QJsonValue& each : applications) {
        const QJsonObject application = each.toObject();
        const QString state = member(application, "state");
        if (state == QLatin1String("connected"))
            continue;
        const QString program = printable(member(application, "program"));
        text += QStringLiteral("application %1 (%2) is %3\n")
                    .arg(application[QLatin1String("number")].toInt())
                    .arg(program.isEmpty() ? printable(member(application, "address")) : program,
                         printable(state));
    }
    return text;
}

} // namespace vigilctl
