// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_DOCUMENTS_JSONTEXT_H
#define VIGIL_AGENT_DOCUMENTS_JSONTEXT_H

#include <QByteArray>
#include <QDateTime>

#include <string>

namespace agent {

/// Values as JSON has them. A document of many values is written piece by piece, so there is no tree of it.
namespace json {

/// A text in quotes. It is safe in HTML, too: "<" and "&" are escaped.
QByteArray quoted(const std::string& text);
QByteArray quoted(const QString& text);

/// A number from its decimal text; null if the text is not a finite number.
QByteArray number(const std::string& text);
QByteArray number(double value);

/// Milliseconds as seconds.
QByteArray seconds(qint64 ms);

/// As in 2026-01-31T12:34:56Z; null for a null time.
QByteArray time(const QDateTime& time);

/// "ok", "warning", "critical" or "unknown", without quotes.
QByteArray statusName(int status);

} // namespace json
} // namespace agent

#endif
