// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_HEALTHSCALARS_H
#define VIGIL_AGENT_SERVING_HEALTHSCALARS_H

#include "agent/checks/CheckList.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Serves vigilAgentHealth: the health of the whole host in a few scalars.
///
/// Ownership: the scalars must outlive Net-SNMP's agent, and checks must outlive them.
class HealthScalars
{
public:
    explicit HealthScalars(const CheckList& checks) : m_checks(checks) {}

    /// Net-SNMP's agent must be initialised. False if it refuses.
    bool registerObjects();

private:
    // Called by Net-SNMP.
    static int handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                      netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    void put(netsnmp_variable_list* varbind, oid object) const;

    const CheckList& m_checks;
};

} // namespace agent

#endif
