// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_DIRECTANSWERS_H
#define VIGIL_AGENT_NETSNMP_DIRECTANSWERS_H

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Answers the GETs and GETNEXTs of snmpd while Net-SNMP reads them.
///
/// Net-SNMP would send each request through a pipe to its own agent, and the answer back through another.
/// That costs more than the answer. Only a SET needs the pipes, because it may wait for an application.
/// Requests after a SET take the pipes, too, until these are empty: a GET must not overtake the SET.
///
/// snmpd repeats a message without an answer every second. Net-SNMP would take a repeated step of a SET for a
/// further one, so it is ignored here: the first one gets the answer. A master that does not keep to the
/// steps of a SET is left.
///
/// Ownership: the session stays Net-SNMP's.
void answerDirectly(netsnmp_session& session);

/// True while a request is on its way through the pipes.
bool isPipeBusy();

} // namespace agent

#endif
