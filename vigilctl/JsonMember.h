// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_JSONMEMBER_H
#define VIGILCTL_JSONMEMBER_H

#include <QJsonObject>
#include <QString>

namespace vigilctl {

/// A text of the agent's document; empty if it is missing.
inline QString member(const QJsonObject& object, const char* name)
{
    return object[QLatin1String(name)].toString();
}

} // namespace vigilctl

#endif
