// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_MATCHESPATTERN_H
#define VIGIL_SUPPORT_MATCHESPATTERN_H

#include <gmock/gmock.h>

#include <QRegularExpression>
#include <QString>

#include <string>

namespace support {

/// Like testing::MatchesRegex, with the same patterns on every platform.
MATCHER_P(MatchesPattern, pattern, "matches " + std::string(pattern))
{
    const QString anchored = QRegularExpression::anchoredPattern(QString::fromStdString(pattern));
    return QRegularExpression(anchored).match(QString::fromStdString(arg)).hasMatch();
}

} // namespace support

#endif
