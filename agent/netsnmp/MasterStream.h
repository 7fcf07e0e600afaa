// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MASTERSTREAM_H
#define VIGIL_AGENT_NETSNMP_MASTERSTREAM_H

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Sends and receives in Net-SNMP's place what goes through a session with snmpd.
///
/// Purpose: Net-SNMP writes until everything is written. A snmpd that hangs would hold up the agent as soon
/// as the system's buffer is full; here it has half a second to take what is sent, then the stream is shut
/// down and Net-SNMP finds it closed, as if snmpd had ended. When a stream is reset, as it is by a snmpd that
/// is killed, Net-SNMP loses the memory for the sender's address; here there is none.
///
/// Threads: Net-SNMP's. Ownership: the transport stays Net-SNMP's. Failure: see above.
void takeOverStream(netsnmp_transport& transport);

} // namespace agent

#endif
