// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MASTERSTREAM_H
#define VIGIL_AGENT_NETSNMP_MASTERSTREAM_H

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Replaces how Net-SNMP sends and receives on the stream to snmpd.
///
/// Net-SNMP blocks until everything is sent; a snmpd that hangs would block the agent once the system's
/// buffer is full. Here a send gets half a second, then the stream is shut down. When snmpd is killed and the
/// stream is reset, Net-SNMP leaks the sender's address; here there is none.
///
/// Ownership: the transport stays Net-SNMP's.
void takeOverStream(netsnmp_transport& transport);

/// Net-SNMP then finds the stream closed, as if snmpd had ended.
void shutDownStream(const netsnmp_transport& transport);

} // namespace agent

#endif
