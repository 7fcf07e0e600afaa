// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/ChecksJson.h"

#include <QSysInfo>

#include "agent/cells/HealthTable.h"
#include "agent/checks/RangeBounds.h"
#include "agent/core/HostAndPort.h"
#include "agent/documents/JsonText.h"
#include "base/BuildInfo.h"

namespace agent {

namespace {

/// A member of an object, with a comma after it.
QByteArray member(const char* name, const QByteArray& value)
{
    return QByteArray("\"") + name + "\":" + value + ',';
}

QByteArray textMember(const char* name, const std::string& text)
{
    return member(name, json::quoted(text));
}

QByteArray flagMember(const char* name, bool isSet)
{
    return member(name, isSet ? "true" : "false");
}

QByteArray statusMembers(int status, int severity)
{
    return member("status", '"' + json::statusName(status) + '"') +
           member("severity", QByteArray::number(severity));
}

/// members without the last comma, as an object.
QByteArray object(const QByteArray& members)
{
    return '{' + members.left(members.size() - 1) + '}';
}

QByteArray rangeObject(const std::string& range)
{
    const RangeBounds bounds = boundsOf(range);
    return object(textMember("text", range) + member("lower", json::number(bounds.lower)) +
                  member("upper", json::number(bounds.upper)) + flagMember("inverse", bounds.isInverse));
}

/// A number where the system's identifiers of users are numbers.
QByteArray userValue(const User& user)
{
    if (!user)
        return "null";
    bool isNumber = false;
    const QString text = QString::fromStdString(*user);
    text.toUInt(&isNumber);
    return isNumber ? text.toLatin1() : json::quoted(text);
}

QByteArray applicationObject(const ApplicationInfo& application, bool isSilent)
{
    const bool isConnected = application.state == ApplicationInfo::State::Connected;
    const QByteArray state = !isConnected ? "lost" : isSilent ? "silent" : "connected";
    const Identity& identity = application.identity;
    return object(member("number", QByteArray::number(application.number)) +
                  member("program", json::quoted(identity.program)) +
                  member("process", QByteArray::number(identity.process)) +
                  member("user", userValue(identity.user)) +
                  member("address", json::quoted(hostAndPort(application.address, application.port))) +
                  member("state", '"' + state + '"') + member("since", json::time(application.since)) +
                  member("lastFrame", json::time(application.lastFrame)) +
                  member("cells", QByteArray::number(static_cast<qulonglong>(application.cells))));
}

} // namespace

QByteArray summaryJson(const CheckList& checks)
{
    QByteArray counts;
    for (const int each : status::bySeverity)
        counts += member(json::statusName(each).constData(),
                         QByteArray::number(static_cast<qulonglong>(checks.count(each))));
    return statusMembers(checks.worstStatus(), checks.worstSeverity()) +
           member("lastChange", json::time(checks.lastChange())) + member("counts", object(counts));
}

bool ChecksJson::appendTo(QByteArray& text)
{
    switch (m_part) {
    case Part::Start:
        text += start();
        m_part = Part::Checks;
        return true;
    case Part::Checks:
        text += nextCheck();
        return true;
    case Part::Metrics:
        text += nextMetric();
        return true;
    case Part::Applications:
        text += nextApplication();
        return m_part != Part::End;
    case Part::End:
        break;
    }
    return false;
}

QByteArray ChecksJson::start() const
{
    return '{' + member("version", "1") + textMember("agent", base::buildInfo::version()) +
           member("host", json::quoted(QSysInfo::machineHostName())) +
           member("time", json::time(m_sources.clock.nowUtc())) + summaryJson(m_sources.checks) +
           "\"checks\":[";
}

QByteArray ChecksJson::nextCheck()
{
    const std::optional<Check> check = m_sources.checks.next(m_check);
    if (!check) {
        m_part = Part::Applications;
        return "],\n\"applications\":[";
    }
    const QByteArray separator = m_check == 0 ? "\n" : ",\n";
    m_part = Part::Metrics;
    m_check = check->number;
    m_metric = 0;
    const bool stale = isStale(*check);
    if (stale)
        m_silent.insert(check->application);
    return separator + '{' + member("number", QByteArray::number(check->number)) +
           textMember("firstKey", check->firstKey) + textMember("secondKey", check->secondKey) +
           textMember("name", check->name) + statusMembers(check->status, check->severity()) +
           textMember("summary", check->summary) + member("since", json::time(check->since)) +
           member("lastUpdate", json::time(check->lastUpdate)) +
           member("ageSeconds", check->ageMs < 0 ? "null" : json::seconds(check->ageMs)) +
           member("updates", QByteArray::number(check->updates)) + flagMember("stale", stale) +
           member("mutedUntil", json::time(check->mutedUntil)) +
           member("application", QByteArray::number(check->application)) + "\"metrics\":[";
}

QByteArray ChecksJson::nextMetric()
{
    const std::optional<Metric> metric = m_sources.checks.nextMetric({m_check, m_metric});
    if (!metric || metric->check != m_check) {
        m_part = Part::Checks;
        return "]}";
    }
    const QByteArray separator = m_metric == 0 ? "" : ",";
    m_metric = metric->number;
    return separator +
           object(member("number", QByteArray::number(metric->number)) + textMember("name", metric->name) +
                  statusMembers(metric->status, metric->severity()) + textMember("summary", metric->summary) +
                  member("value", json::number(metric->value)) + textMember("valueText", metric->value) +
                  textMember("unit", metric->unit) + member("warning", rangeObject(metric->warningRange)) +
                  member("critical", rangeObject(metric->criticalRange)));
}

QByteArray ChecksJson::nextApplication()
{
    const std::optional<ApplicationInfo> application = m_sources.applications.next(m_application);
    if (!application) {
        m_part = Part::End;
        return "]}\n";
    }
    const QByteArray separator = m_application == 0 ? "\n" : ",\n";
    m_application = application->number;
    return separator + applicationObject(*application, m_silent.count(application->number) > 0);
}

bool ChecksJson::isStale(const Check& check) const
{
    const Cell* status = m_sources.store.find(healthTable::cellOf(healthTable::Column::Status, check.id));
    return status && status->cover && status->cover->reason == Cover::Reason::Stale;
}

} // namespace agent
