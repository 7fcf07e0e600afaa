// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/AgentMib.h"

namespace agent {

AgentMib::AgentMib(const Clock& clock, const CellStore& store, const CheckList& checks,
                   const ApplicationServer& applications, const SetCoordinator& sets,
                   const Notifications& notifications, const SnmpEngine& engine)
    : m_scalars(clock, store, applications, sets, notifications, engine),
      m_connections(applications),
      m_health(checks),
      m_checks(checks),
      m_metrics(checks)
{}

Error AgentMib::registerObjects()
{
    if (m_scalars.registerObjects() && m_connections.registerObjects() && m_health.registerObjects() &&
        m_checks.registerObjects() && m_metrics.registerObjects())
        return {};
    return Error(
        QStringLiteral("Net-SNMP refuses the agent's own objects at %1; --subtree must not lie among them")
            .arg(toText(agentMibRoot())));
}

} // namespace agent
