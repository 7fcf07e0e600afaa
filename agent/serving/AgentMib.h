// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_AGENTMIB_H
#define VIGIL_AGENT_SERVING_AGENTMIB_H

#include <vector>

#include "agent/applications/ApplicationServer.h"
#include "agent/cells/CellStore.h"
#include "agent/core/Clock.h"
#include "agent/netsnmp/NetSnmp.h"
#include "agent/notifications/Notifications.h"
#include "agent/serving/SetCoordinator.h"

namespace agent {

/// Serves VIGIL-AGENT-MIB: the agent's own state and its connections.
///
/// Purpose: an operator finds out with one snmptable which application is silent or gone.
///
/// Threads: the agent has one, which is Net-SNMP's too.
/// Ownership: what it reports on must outlive it, and it Net-SNMP's agent. Failure: none behind
/// registerObjects().
class AgentMib
{
public:
    AgentMib(const Clock& clock, const CellStore& store, const ApplicationServer& applications,
             const SetCoordinator& sets, const Notifications& notifications);

    /// Net-SNMP's agent must be initialised. False when it refuses.
    bool registerObjects();

private:
    bool registerScalars();
    bool registerConnections();
    void putScalar(netsnmp_variable_list* varbind, oid object) const;

    // Called by Net-SNMP.
    static int handleScalars(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                             netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    static int handleConnections(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                                 netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    static netsnmp_variable_list* firstRow(void** loop, void** data, netsnmp_variable_list* index,
                                           netsnmp_iterator_info* info);
    static netsnmp_variable_list* nextRow(void** loop, void** data, netsnmp_variable_list* index,
                                          netsnmp_iterator_info* info);
    netsnmp_variable_list* offerRow(size_t row, void** loop, void** data, netsnmp_variable_list* index);

    const Clock& m_clock;
    const qint64 m_startMs;
    const CellStore& m_store;
    const ApplicationServer& m_applications;
    const SetCoordinator& m_sets;
    const Notifications& m_notifications;
    std::vector<ApplicationInfo> m_rows; // while Net-SNMP goes through the table
};

} // namespace agent

#endif
