// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_REFUSEDDIRECTIVES_H
#define VIGIL_AGENT_NETSNMP_REFUSEDDIRECTIVES_H

namespace agent {

/// Makes some directives of the configuration wrong lines: those Net-SNMP writes into files of its own, where
/// it crashes at a missing word, "perl", which ends the process at an error of the script, and "doDebugging":
/// Net-SNMP logs about its logging, and never ends. Call it after Net-SNMP has registered its own directives.
void refuseDirectives();

} // namespace agent

#endif
