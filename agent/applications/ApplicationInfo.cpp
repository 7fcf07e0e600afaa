// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationInfo.h"

#include "agent/core/HostAndPort.h"

namespace agent {

QString nameOf(const ApplicationInfo& application)
{
    return QStringLiteral("application %1 (%2, %3)")
        .arg(QString::number(application.number), identityText(application.identity),
             hostAndPort(application.address, application.port));
}

} // namespace agent
