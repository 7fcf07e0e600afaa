#ifndef VIGIL_AGENT_AGENT_H
#define VIGIL_AGENT_AGENT_H

#include <QString>

#include <functional>

#include "AgentMib.h"
#include "ApplicationServer.h"
#include "CellStore.h"
#include "Notifications.h"
#include "Options.h"
#include "ServedCells.h"
#include "SetCoordinator.h"
#include "SnmpEngine.h"
#include "SubtreeHandler.h"
#include "SystemClock.h"

namespace agent {

/// The whole agent: the applications on one side, SNMP on the other, the cells between them.
///
/// Threads: lives on the thread of the event loop. Failure: start() says in text why the agent cannot run;
/// from then on it goes on until it is destroyed.
class Agent
{
public:
    explicit Agent(const Options& options);

    /// Returns what is wrong, or an empty text. Nothing is served before the event loop runs.
    QString start();

    /// Takes a changed configuration over, and says in the log what came of it.
    void reload();

    /// See SnmpEngine.
    void setStatusListener(const std::function<void(const QString&)>& listener);

private:
    const Options m_options;
    SystemClock m_clock;
    CellStore m_store;
    ServedCells m_cells;
    ApplicationServer m_applications;
    Notifications m_notifications{m_cells, m_applications, m_clock};
    SetCoordinator m_coordinator;
    SubtreeHandler m_handler{m_store, m_coordinator};
    AgentMib m_agentMib{m_clock, m_store, m_applications, m_coordinator, m_notifications};
    SnmpEngine m_engine; // last: goes first, and with it whatever Net-SNMP still holds of the others
};

} // namespace agent

#endif
