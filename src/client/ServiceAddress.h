// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_SERVICEADDRESS_H
#define VIGIL_CLIENT_SERVICEADDRESS_H

#include "base/ConnectionSettings.h"

/// Where the local SNMP service listens: base::defaultServicePort on the loopback interface, unless the
/// environment variable VIGIL_SERVICE_PORT names another port. A bad value is reported in the log and
/// ignored.
base::ConnectionSettings serviceAddress();

#endif
