// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_SERVICEADDRESS_H
#define VIGIL_CLIENT_SERVICEADDRESS_H

#include "base/ConnectionSettings.h"

/// Where the local SNMP service listens: base::defaultServicePort on the loopback interface, unless the
/// environment variable VIGIL_SERVICE_PORT names another port. Port 0 means that the variable has a bad
/// value, which the log reports: connect to nothing then. The default port could belong to a service in
/// production.
base::ConnectionSettings serviceAddress();

/// True if VIGIL_SERVICE_PORT is "off": the library starts no threads.
bool isServiceOff();

#endif
