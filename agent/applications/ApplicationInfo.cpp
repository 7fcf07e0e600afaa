// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationInfo.h"

namespace agent {

QString nameOf(const ApplicationInfo& application)
{
    return QStringLiteral("application %1 (%2, %3:%4)")
        .arg(application.number)
        .arg(identityText(application.identity), application.address.toString())
        .arg(application.port);
}

} // namespace agent
