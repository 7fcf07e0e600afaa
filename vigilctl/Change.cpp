// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/Change.h"

#include <QJsonArray>

#include <vector>

#include "vigilctl/JsonMember.h"
#include "vigilctl/Printable.h"

namespace vigilctl {

namespace {

QString numberOf(const QJsonObject& object)
{
    return QString::number(static_cast<qint64>(object[QLatin1String("number")].toDouble()));
}

bool isNumber(const QString& text)
{
    bool isNumber = false;
    text.toUInt(&isNumber);
    return isNumber;
}

/// Finds objects by number or, if the text is no number, by name.
std::vector<QJsonObject> named(const QJsonArray& list, const char* nameMember, const QString& target)
{
    std::vector<QJsonObject> found;
    for (const QJsonValue& each : list) {
        const QJsonObject object = each.toObject();
        if ((isNumber(target) ? numberOf(object) : printable(member(object, nameMember))) == target)
            found.push_back(object);
    }
    return found;
}

/// Empty if there is exactly one.
QString problemWith(const std::vector<QJsonObject>& found, const QString& what, const QString& target)
{
    if (found.size() == 1)
        return {};
    if (found.empty())
        return QStringLiteral("there is no %1 %2").arg(what, target);
    QStringList numbers;
    for (const QJsonObject& each : found)
        numbers += numberOf(each);
    return QStringLiteral("%1 is the name of several; choose a number: %2")
        .arg(target, numbers.join(QStringLiteral(", ")));
}

std::vector<QJsonObject> lost(const std::vector<QJsonObject>& applications)
{
    std::vector<QJsonObject> lost;
    for (const QJsonObject& each : applications) {
        if (member(each, "state") == QLatin1String("lost"))
            lost.push_back(each);
    }
    return lost;
}

} // namespace

QString Change::makeRequest(const QJsonObject& document, QJsonObject& request) const
{
    const QString& target = m_arguments.target;
    const bool isForget = m_arguments.command == Arguments::Command::Forget;
    const char* list = isForget ? "applications" : "checks";
    std::vector<QJsonObject> found =
        named(document[QLatin1String(list)].toArray(), isForget ? "program" : "name", target);
    if (isForget && !found.empty()) {
        found = lost(found);
        if (found.empty())
            return QStringLiteral("application %1 is connected; only a lost one can be forgotten")
                .arg(target);
    }
    QString problem =
        problemWith(found, isForget ? QStringLiteral("application") : QStringLiteral("check"), target);
    if (!problem.isEmpty())
        return problem;
    const QJsonValue number = found.front()[QLatin1String("number")];
    if (isForget) {
        request = {{QStringLiteral("command"), QStringLiteral("forget")},
                   {QStringLiteral("application"), number}};
        return {};
    }
    request = {{QStringLiteral("check"), number}, {QStringLiteral("name"), member(found.front(), "name")}};
    const bool isMute = m_arguments.command == Arguments::Command::Mute;
    request[QLatin1String("command")] = isMute ? QStringLiteral("mute") : QStringLiteral("unmute");
    if (isMute)
        request[QLatin1String("seconds")] = m_arguments.seconds;
    return {};
}

QString Change::text(const QJsonObject& reply) const
{
    const QString name = printable(member(reply, "name"));
    if (m_arguments.command == Arguments::Command::Mute)
        return QStringLiteral("%1 is muted until %2\n").arg(name, printable(member(reply, "mutedUntil")));
    if (m_arguments.command == Arguments::Command::Unmute)
        return QStringLiteral("%1 is no longer muted\n").arg(name);
    return QStringLiteral("%1 is forgotten, cells removed: %2\n")
        .arg(name, QString::number(static_cast<qint64>(reply[QLatin1String("cells")].toDouble())));
}

} // namespace vigilctl
