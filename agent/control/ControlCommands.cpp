// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/control/ControlCommands.h"

#include <QJsonDocument>

#include "agent/core/Log.h"

namespace agent {

namespace {

QByteArray lineOf(const QJsonObject& reply)
{
    return QJsonDocument(reply).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray refusal(const QString& reason)
{
    return lineOf({{QStringLiteral("error"), reason}});
}

QByteArray noSuchCheck()
{
    return refusal(QStringLiteral("there is no such check"));
}

/// 0 if it is missing, not whole or too large.
unsigned int numberIn(const QJsonObject& request, const char* member)
{
    const double number = request[QLatin1String(member)].toDouble();
    const bool isNumber = number >= 1 && number <= 0xffff'ffffU;
    const auto whole = isNumber ? static_cast<unsigned int>(number) : 0;
    return static_cast<double>(whole) == number ? whole : 0;
}

QByteArray muteLine(const Check& check, const QDateTime& until)
{
    return lineOf({{QStringLiteral("check"), static_cast<qint64>(check.number)},
                   {QStringLiteral("name"), QString::fromStdString(check.name)},
                   {QStringLiteral("mutedUntil"),
                    until.isNull() ? QJsonValue() : QJsonValue(until.toString(Qt::ISODate))}});
}

} // namespace

ControlReply ControlCommands::replyTo(const QByteArray& line, const User& user)
{
    const QJsonObject request = QJsonDocument::fromJson(line).object();
    const QString command = request[QLatin1String("command")].toString();
    if (command == QLatin1String("checks"))
        return {{}, std::make_unique<ChecksJson>(m_sources)};
    if (command == QLatin1String("mute"))
        return {mute(request, user), nullptr};
    if (command == QLatin1String("unmute"))
        return {unmute(request, user), nullptr};
    if (command == QLatin1String("forget"))
        return {forget(request, user), nullptr};
    return {refusal(QStringLiteral("this agent does not know the request")), nullptr};
}

QByteArray ControlCommands::mute(const QJsonObject& request, const User& user)
{
    constexpr qint64 msPerSecond = 1000;
    const std::optional<Check> check = checkIn(request);
    const qint64 forMs = numberIn(request, "seconds") * msPerSecond;
    if (!check)
        return noSuchCheck();
    if (forMs == 0 || forMs > Mutes::longestMs)
        return refusal(QStringLiteral("a mute takes from a second to 366 days"));
    if (const Error error = m_mutes.mute(check->id, forMs))
        return refusal(error.text());
    const QDateTime until = m_mutes.untilOf(check->id);
    log::info(QStringLiteral("%1 has muted the check %2 until %3")
                  .arg(userText(user), QString::fromStdString(check->name), until.toString(Qt::ISODate)));
    return muteLine(*check, until);
}

QByteArray ControlCommands::unmute(const QJsonObject& request, const User& user)
{
    const std::optional<Check> check = checkIn(request);
    if (!check)
        return noSuchCheck();
    if (!m_mutes.unmute(check->id))
        return refusal(QStringLiteral("the check is not muted"));
    log::info(QStringLiteral("%1 has unmuted the check %2")
                  .arg(userText(user), QString::fromStdString(check->name)));
    return muteLine(*check, {});
}

QByteArray ControlCommands::forget(const QJsonObject& request, const User& user)
{
    const ApplicationId application = numberIn(request, "application");
    if (m_sources.applications.isConnected(application))
        return refusal(QStringLiteral("the application is connected; only a lost one can be forgotten"));
    const QString name = m_sources.applications.nameOf(application);
    const size_t cells = m_cells.store().countOf(application);
    if (!m_cells.forget(application))
        return refusal(QStringLiteral("there is no such application"));
    log::info(QStringLiteral("%1 has forgotten %2, cells removed: %3")
                  .arg(userText(user), name, QString::number(cells)));
    return lineOf({{QStringLiteral("application"), static_cast<qint64>(application)},
                   {QStringLiteral("name"), name},
                   {QStringLiteral("cells"), static_cast<qint64>(cells)}});
}

std::optional<Check> ControlCommands::checkIn(const QJsonObject& request) const
{
    std::optional<Check> check = m_sources.checks.find(numberIn(request, "check"));
    const bool isSame =
        check && QString::fromStdString(check->name) == request[QLatin1String("name")].toString();
    return isSame ? check : std::nullopt;
}

} // namespace agent
