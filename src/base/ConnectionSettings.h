// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_CONNECTIONSETTINGS_H
#define VIGIL_BASE_CONNECTIONSETTINGS_H

#include <QString>

namespace base {

/// Where the SNMP service is and how long to wait for it.
struct ConnectionSettings
{
    QString host;
    int port = 0;
    int connectTimeoutMs = 5000;
};

} // namespace base

#endif
