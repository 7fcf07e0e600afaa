// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_ENTERPRISEID_H
#define VIGIL_SUPPORT_ENTERPRISEID_H

#include <QString>

namespace support {

inline const QString enterprise = QStringLiteral(".1.3.6.1.4.1.32473");

/// A relative identifier in full, for the tools of a manager.
inline QString full(const char* relative)
{
    return enterprise + QLatin1Char('.') + QLatin1String(relative);
}

} // namespace support

#endif
