// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceLog.h"

#include <QDateTime>
#include <QRegularExpression>

#include <utility>

#include <windows.h>

#include "ServiceMessages.h"
#include "agent/core/ServiceAccount.h"

namespace agent {

namespace {

using log::Severity;

const wchar_t* wide(const QString& text)
{
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

struct EventKind
{
    WORD type;
    DWORD message;
    const char* word; ///< in a file
};

EventKind kindOf(Severity severity)
{
    switch (severity) {
    case Severity::Error:
        return {EVENTLOG_ERROR_TYPE, SERVICE_ERROR, "error: "};
    case Severity::Warning:
        return {EVENTLOG_WARNING_TYPE, SERVICE_WARNING, "warning: "};
    case Severity::Info:
    case Severity::Debug:
        break;
    }
    return {EVENTLOG_INFORMATION_TYPE, SERVICE_INFORMATION, ""};
}

/// The event viewer would take a percent sign with a number, as in an IPv6 address, for a place to fill.
QString withoutPlaces(QString text)
{
    static const QRegularExpression place(QStringLiteral("%(?=[0-9%])"));
    return text.replace(place, QStringLiteral("% "));
}

/// False if the log has no line although one was just reported: Wine takes lines and keeps none.
bool keepsLines()
{
    HANDLE log = OpenEventLogW(nullptr, L"Application");
    if (!log)
        return true; // it may be written and not be read
    DWORD lines = 0;
    const bool isKnown = GetNumberOfEventLogRecords(log, &lines) != 0;
    CloseEventLog(log);
    return !isKnown || lines > 0;
}

} // namespace

ServiceLog::ServiceLog(const QString& folder)
    : m_files(folder), m_source(RegisterEventSourceW(nullptr, wide(serviceAccount::service())))
{}

bool ServiceLog::write(Severity severity, const QString& text)
{
    constexpr int bytesPerLetter = 2;
    return m_writer.add(text.size() * bytesPerLetter, [this, severity, text] { writeLine(severity, text); });
}

bool ServiceLog::report(Severity severity, const QString& text)
{
    if (severity == Severity::Debug || !m_source)
        return false;
    const EventKind kind = kindOf(severity);
    const QString safe = withoutPlaces(text);
    const wchar_t* const strings[] = {wide(safe)};
    const bool isReported = ReportEventW(m_source, kind.type, 0, kind.message, nullptr, 1, 0,
                                         const_cast<const wchar_t**>(strings), nullptr) != 0;
    if (isReported && !std::exchange(m_isEventLogTried, true) && !keepsLines())
        m_source = nullptr;
    return isReported && m_source;
}

void ServiceLog::writeLine(Severity severity, const QString& text)
{
    if (report(severity, text))
        return;
    const QString time = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    m_files.write(
        QStringLiteral("%1 %2%3\r\n").arg(time, QLatin1String(kindOf(severity).word), text).toUtf8());
}

} // namespace agent
