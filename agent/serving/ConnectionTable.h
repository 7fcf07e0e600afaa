// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_CONNECTIONTABLE_H
#define VIGIL_AGENT_SERVING_CONNECTIONTABLE_H

#include <vector>

#include "agent/applications/ApplicationInfo.h"
#include "agent/applications/ApplicationServer.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Serves vigilAgentConnectionTable: a row for each application, connected or lost. One snmptable shows the
/// operator which application is silent or gone.
///
/// Ownership: the table must outlive Net-SNMP's agent, and the applications must outlive the table.
class ConnectionTable
{
public:
    explicit ConnectionTable(const ApplicationServer& applications) : m_applications(applications) {}

    /// Net-SNMP's agent must be initialised. False if it refuses.
    bool registerObjects();

private:
    // Called by Net-SNMP.
    static int handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                      netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    static netsnmp_variable_list* firstRow(void** loop, void** data, netsnmp_variable_list* index,
                                           netsnmp_iterator_info* info);
    static netsnmp_variable_list* nextRow(void** loop, void** data, netsnmp_variable_list* index,
                                          netsnmp_iterator_info* info);
    netsnmp_variable_list* offerRow(size_t row, void** loop, void** data, netsnmp_variable_list* index);

    const ApplicationServer& m_applications;
    std::vector<ApplicationInfo> m_rows; // valid while Net-SNMP iterates
};

} // namespace agent

#endif
