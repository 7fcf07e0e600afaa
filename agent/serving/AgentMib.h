// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_AGENTMIB_H
#define VIGIL_AGENT_SERVING_AGENTMIB_H

#include "agent/core/Error.h"
#include "agent/serving/AgentScalars.h"
#include "agent/serving/CheckTable.h"
#include "agent/serving/ConnectionTable.h"
#include "agent/serving/HealthScalars.h"
#include "agent/serving/MetricTable.h"

namespace agent {

/// Serves VIGIL-AGENT-MIB, the agent's own state.
///
/// Ownership: it must outlive Net-SNMP's agent, and everything it is given must outlive it.
class AgentMib
{
public:
    AgentMib(const Clock& clock, const CellStore& store, const CheckList& checks,
             const ApplicationServer& applications, const SetCoordinator& sets,
             const Notifications& notifications, const SnmpEngine& engine);

    /// Net-SNMP's agent must be initialised.
    Error registerObjects();

private:
    AgentScalars m_scalars;
    ConnectionTable m_connections;
    HealthScalars m_health;
    CheckTable m_checks;
    MetricTable m_metrics;
};

} // namespace agent

#endif
