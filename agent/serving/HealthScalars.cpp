// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/HealthScalars.h"

#include <vector>

#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

// The arcs in the MIB, and its names without "vigilAgent".
constexpr unsigned int healthArc = 3;
enum HealthScalar : oid {
    Checks = 1,
    ChecksOk,
    ChecksWarning,
    ChecksCritical,
    ChecksUnknown,
    WorstStatus,
    WorstSeverity,
    LastChange
};

} // namespace

bool HealthScalars::registerObjects()
{
    const ObjectId root = below(agentMibRoot(), {healthArc});
    const std::vector<oid> rootOid(root.begin(), root.end());
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        "vigilAgentHealth", &HealthScalars::handle, rootOid.data(), rootOid.size(), HANDLER_CAN_RONLY);
    if (!registration)
        return false;
    registration->handler->myvoid = this;
    return netsnmp_register_scalar_group(registration, Checks, LastChange) == MIB_REGISTERED_OK;
}

int HealthScalars::handle(netsnmp_mib_handler* handler, netsnmp_handler_registration*,
                          netsnmp_agent_request_info*, netsnmp_request_info* requests)
{
    const auto* self = static_cast<const HealthScalars*>(handler->myvoid);
    netsnmp_variable_list* varbind = requests->requestvb; // Net-SNMP's helpers pass one request at a time
    self->put(varbind, varbind->name[varbind->name_length - 2]);
    return SNMP_ERR_NOERROR;
}

void HealthScalars::put(netsnmp_variable_list* varbind, oid object) const
{
    switch (object) {
    case Checks:
        return putGauge(varbind, m_checks.size());
    case ChecksOk:
        return putGauge(varbind, m_checks.count(status::ok));
    case ChecksWarning:
        return putGauge(varbind, m_checks.count(status::warning));
    case ChecksCritical:
        return putGauge(varbind, m_checks.count(status::critical));
    case ChecksUnknown:
        return putGauge(varbind, m_checks.count(status::unknown));
    case WorstStatus:
        return putValue(varbind, m_checks.worstStatus());
    case WorstSeverity:
        return putValue(varbind, m_checks.worstSeverity());
    case LastChange:
        return putTime(varbind, m_checks.lastChange());
    default:
        break;
    }
}

} // namespace agent
