// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_SUBTREEHANDLER_H
#define VIGIL_AGENT_SERVING_SUBTREEHANDLER_H

#include <QObject>

#include <map>

#include "agent/cells/CellStore.h"
#include "agent/netsnmp/NetSnmp.h"
#include "agent/serving/SetCoordinator.h"

namespace agent {

/// Answers a manager's requests below one root from the store.
///
/// Purpose: the one handler that Net-SNMP calls for the whole subtree. GET and GETNEXT are answered at once.
/// A SET runs through Net-SNMP's phases: the first reserve phase checks what can be checked here, the second
/// asks the applications and delegates the request until they have answered, the action phase makes sure that
/// nothing has changed since, the commit phase carries it out.
///
/// Threads: the agent has one, which is Net-SNMP's too.
/// Ownership: store and coordinator must outlive the handler, and the handler Net-SNMP's agent.
/// Failure: is told to the manager as an SNMP error status.
class SubtreeHandler : public QObject
{
    Q_OBJECT

public:
    SubtreeHandler(const CellStore& store, SetCoordinator& coordinator);
    ~SubtreeHandler() override;

    /// Takes the subtree. Net-SNMP's agent must be initialised. False when it refuses.
    bool registerSubtree(const ObjectId& root);

    /// True while a SET waits for applications.
    bool isWaiting() const { return !m_delegated.empty(); }

private:
    static int handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                      netsnmp_agent_request_info* info, netsnmp_request_info* requests);

    void handleGet(netsnmp_request_info* requests) const;
    void handleGetNext(netsnmp_request_info* requests) const;
    void checkVarbinds(netsnmp_request_info* requests) const;
    void askOwners(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                   netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    void checkUnchanged(netsnmp_request_info* requests) const;
    void resume(SetCoordinator::Key key, int index, int errorStatus);

    const CellStore& m_store;
    SetCoordinator& m_coordinator;
    ObjectId m_root;
    std::map<SetCoordinator::Key, netsnmp_delegated_cache*> m_delegated;
};

} // namespace agent

#endif
