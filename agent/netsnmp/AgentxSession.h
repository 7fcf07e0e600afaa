// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_AGENTXSESSION_H
#define VIGIL_AGENT_NETSNMP_AGENTXSESSION_H

#include <QString>

#include <memory>

#include "agent/core/Clock.h"
#include "agent/netsnmp/HostLookup.h"
#include "agent/netsnmp/MasterSession.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// The AgentX session with the host's snmpd, held by Net-SNMP.
///
/// Net-SNMP's own pings and reconnects are switched off: they block on a hung snmpd, and Net-SNMP does not
/// notice a refused registration.
///
/// Ownership: Net-SNMP's state is global, so one object per process.
class AgentxSession : public MasterSession
{
    Q_OBJECT

public:
    /// address in Net-SNMP's notation. A host's name is looked up outside the event loop, before the first
    /// attempt to open the session and after each that fails.
    AgentxSession(const QString& address, Clock& clock);

    /// Where snmpd listens for subagents if nothing else is configured; set when Net-SNMP was built. Empty on
    /// a system where no agent can join a master.
    static QString defaultAddress();

    /// Takes the session over from Net-SNMP. Call it between init_agent() and init_snmp().
    void initialise();

    /// Call it before snmp_shutdown() closes the session. A hung snmpd delays that by 0.2 seconds at most.
    void prepareToEnd();

    bool open() override;
    bool registerTree(const ObjectId& tree) override;
    bool ping() override;
    void hangUp() override;

signals:
    /// The session was opened or closed, and its descriptor with it.
    void descriptorsChanged();

private:
    static int handleCreated(int, int, void* session, void* self);
    static int handleOpened(int, int, void* session, void* self);
    static int handleClosed(int, int, void* session, void* self);
    static int handleReply(int operation, netsnmp_session* session, int request, netsnmp_pdu* reply,
                           void* self);

    netsnmp_pdu* makeRequest(int command) const;
    bool send(netsnmp_pdu* request);

    QString m_address;                        // in numbers; empty until it is known
    std::unique_ptr<HostLookup> m_hostLookup; // null without a name
    netsnmp_session* m_session = nullptr;     // Net-SNMP's; null while not joined
};

} // namespace agent

#endif
