// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_USERDIRECTIVE_H
#define VIGIL_AGENT_NETSNMP_USERDIRECTIVE_H

namespace agent {

/// Checks the lines "createUser" of the configuration before Net-SNMP reads them: it crashes at one with an
/// authentication, but no passphrase. Call it after Net-SNMP has registered its own directives.
void checkUserDirectives();

} // namespace agent

#endif
