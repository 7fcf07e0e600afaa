// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_AGENTSCALARS_H
#define VIGIL_AGENT_SERVING_AGENTSCALARS_H

#include <QtGlobal>

#include "agent/applications/ApplicationServer.h"
#include "agent/cells/CellStore.h"
#include "agent/core/Clock.h"
#include "agent/netsnmp/NetSnmp.h"
#include "agent/netsnmp/SnmpEngine.h"
#include "agent/notifications/Notifications.h"
#include "agent/serving/SetCoordinator.h"

namespace agent {

/// Serves the scalars of VIGIL-AGENT-MIB: version, uptime, and counts.
///
/// Ownership: the scalars must outlive Net-SNMP's agent, and everything they are given must outlive them.
class AgentScalars
{
public:
    AgentScalars(const Clock& clock, const CellStore& store, const ApplicationServer& applications,
                 const SetCoordinator& sets, const Notifications& notifications, const SnmpEngine& engine);

    /// Net-SNMP's agent must be initialised. False if it refuses.
    bool registerObjects();

private:
    // Called by Net-SNMP.
    static int handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                      netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    void put(netsnmp_variable_list* varbind, oid object) const;

    const Clock& m_clock;
    const qint64 m_startMs;
    const CellStore& m_store;
    const ApplicationServer& m_applications;
    const SetCoordinator& m_sets;
    const Notifications& m_notifications;
    const SnmpEngine& m_engine;
};

} // namespace agent

#endif
