// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/documents/JsonText.h"

#include <cmath>
#include <cstring>

#include "agent/checks/Severity.h"

namespace agent::json {

namespace {

bool isPlain(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code >= ' ' && code != 0x7f && !std::strchr("\"\\<>&", byte);
}

/// Hostile texts consist of nothing else, so it makes no temporary text.
void appendEscaped(QByteArray& text, unsigned char byte)
{
    constexpr const char* digits = "0123456789abcdef";
    text += "\\u00";
    text += digits[byte / 16];
    text += digits[byte % 16];
}

} // namespace

QByteArray quoted(const std::string& text)
{
    QByteArray quoted;
    quoted.reserve(static_cast<int>(text.size()) + 2);
    quoted += '"';
    for (const char byte : text) {
        if (isPlain(byte))
            quoted += byte;
        else
            appendEscaped(quoted, static_cast<unsigned char>(byte));
    }
    return quoted += '"';
}

QByteArray quoted(const QString& text)
{
    return quoted(text.toStdString());
}

QByteArray number(const std::string& text)
{
    bool isNumber = false;
    const double value = QByteArray::fromStdString(text).toDouble(&isNumber);
    return number(isNumber ? value : std::nan(""));
}

QByteArray number(double value)
{
    constexpr int exact = 15; // digits
    return std::isfinite(value) ? QByteArray::number(value, 'g', exact) : QByteArrayLiteral("null");
}

QByteArray seconds(qint64 ms)
{
    constexpr double msPerSecond = 1000;
    return number(static_cast<double>(ms) / msPerSecond);
}

QByteArray time(const QDateTime& time)
{
    return time.isNull() ? QByteArrayLiteral("null") : quoted(time.toUTC().toString(Qt::ISODate));
}

QByteArray statusName(int status)
{
    switch (status) {
    case status::ok:
        return QByteArrayLiteral("ok");
    case status::warning:
        return QByteArrayLiteral("warning");
    case status::critical:
        return QByteArrayLiteral("critical");
    default:
        return QByteArrayLiteral("unknown");
    }
}

} // namespace agent::json
