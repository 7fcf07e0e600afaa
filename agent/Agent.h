// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_AGENT_H
#define VIGIL_AGENT_AGENT_H

#include <QString>

#include <functional>

#include "agent/applications/ApplicationServer.h"
#include "agent/cells/CellStore.h"
#include "agent/cells/ServedCells.h"
#include "agent/core/Error.h"
#include "agent/core/SystemClock.h"
#include "agent/netsnmp/SnmpEngine.h"
#include "agent/notifications/Notifications.h"
#include "agent/process/Options.h"
#include "agent/serving/AgentMib.h"
#include "agent/serving/SetCoordinator.h"
#include "agent/serving/SubtreeHandler.h"

namespace agent {

/// The whole agent: the applications on one side, SNMP on the other, the cells between them.
///
/// Threads: lives on the thread of the event loop. Failure: start() says in text why the agent cannot run;
/// from then on it goes on until it is destroyed.
class Agent
{
public:
    explicit Agent(const Options& options);

    /// Nothing is served before the event loop runs.
    Error start();

    /// Takes a changed configuration over, and says in the log what came of it.
    void reload();

    /// See SnmpEngine.
    void setStatusListener(const std::function<void(const QString&)>& listener);

private:
    Error listen();

    const Options m_options;
    SystemClock m_clock;
    CellStore m_store;
    ServedCells m_cells;
    ApplicationServer m_applications;
    Notifications m_notifications{m_cells, m_clock};
    SetCoordinator m_coordinator;
    SubtreeHandler m_handler{m_store, m_coordinator};
    AgentMib m_agentMib{m_clock, m_store, m_applications, m_coordinator, m_notifications};
    SnmpEngine m_engine; // last: goes first, and with it whatever Net-SNMP still holds of the others
};

} // namespace agent

#endif
