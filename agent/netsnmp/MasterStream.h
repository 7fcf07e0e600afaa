// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MASTERSTREAM_H
#define VIGIL_AGENT_NETSNMP_MASTERSTREAM_H

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Replaces how Net-SNMP sends and receives on the stream to snmpd.
///
/// Net-SNMP blocks until everything is sent, so a hung snmpd would block the agent once the system's buffer
/// is full. Here a send gets half a second, then the stream is shut down. Net-SNMP also leaks the sender's
/// address when the stream is reset; here a message has no such address. AgentxLimit bounds the messages.
///
/// Net-SNMP closes the session at the end of the stream, and would read freed memory when a request of it is
/// answered afterwards. So it learns of the end once isBusy() is false.
///
/// Ownership: the transport stays Net-SNMP's.
void takeOverStream(netsnmp_transport& transport, bool (*isBusy)());

/// Net-SNMP then finds the stream closed, as if snmpd had ended.
void shutDownStream(const netsnmp_transport& transport);

} // namespace agent

#endif
