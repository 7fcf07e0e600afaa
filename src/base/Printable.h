// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_PRINTABLE_H
#define VIGIL_BASE_PRINTABLE_H

#include <QString>

namespace base {

/// A value from outside, for a log line: control characters and line separators become "\n", "\r", "\t" or
/// "\u" and four digits. Otherwise a manager's SET could forge lines.
///
/// Values are escaped where a line is put together. In a finished line they could not be told from the
/// library's own texts, and some of those have several lines on purpose.
QString printable(const QString& value);

} // namespace base

#endif
