#ifndef VIGIL_AGENT_BOUNDEDSEND_H
#define VIGIL_AGENT_BOUNDEDSEND_H

#include "NetSnmp.h"

namespace agent {

/// Lets a stream of Net-SNMP's wait no longer than half a second for its peer to take what is sent.
///
/// Purpose: Net-SNMP writes until everything is written. A peer that hangs would hold up the agent as soon as
/// the system's buffer is full. Instead the stream is shut down: Net-SNMP finds it closed, as if the peer had
/// ended.
///
/// Threads: Net-SNMP's. Ownership: the transport stays Net-SNMP's. Failure: see above.
void boundSends(netsnmp_transport& transport);

} // namespace agent

#endif
