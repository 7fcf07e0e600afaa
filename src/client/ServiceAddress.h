// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_SERVICEADDRESS_H
#define VIGIL_CLIENT_SERVICEADDRESS_H

#include "base/ConnectionSettings.h"

/// Where the local SNMP service listens: port 43125 on the loopback interface, or the port that the
/// environment variable VIGIL_SERVICE_PORT gives. A value that is no port is reported in the log and ignored.
base::ConnectionSettings serviceAddress();

#endif
