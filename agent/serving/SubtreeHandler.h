// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_SERVING_SUBTREEHANDLER_H
#define VIGIL_AGENT_SERVING_SUBTREEHANDLER_H

#include <QObject>

#include <map>

#include "agent/cells/CellStore.h"
#include "agent/core/Error.h"
#include "agent/netsnmp/NetSnmp.h"
#include "agent/serving/SetCoordinator.h"

namespace agent {

/// Serves a manager's GET, GETNEXT and SET below one root. Net-SNMP calls it for the whole subtree.
///
/// GET and GETNEXT are answered from the store at once. A SET runs through Net-SNMP's phases:
///
/// | Phase      | What happens                                                        |
/// |------------|---------------------------------------------------------------------|
/// | RESERVE1   | checks what the agent knows itself                                  |
/// | RESERVE2   | asks the applications, and delegates the request until they answer  |
/// | ACTION     | checks that no cell has gone or changed hands, and no owner is lost |
/// | COMMIT     | changes the cells and tells the applications                        |
/// | FREE, UNDO | an earlier phase has failed: drops the SET                          |
///
/// Ownership: store and coordinator must outlive the handler, and the handler Net-SNMP's agent.
/// Failure: the manager gets an SNMP error status. The log has one line for each SET.
class SubtreeHandler : public QObject
{
    Q_OBJECT

public:
    SubtreeHandler(const CellStore& store, SetCoordinator& coordinator);
    ~SubtreeHandler() override;

    /// Net-SNMP's agent must be initialised.
    Error registerSubtree(const ObjectId& root);

    /// No answer gets longer than a message of this length. The manager is told tooBig; 0 for no limit.
    void setMaxMessage(size_t bytes) { m_maxMessage = bytes; }

    /// True while a SET waits for applications.
    bool isWaiting() const { return !m_delegated.empty(); }

private:
    static int handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                      netsnmp_agent_request_info* info, netsnmp_request_info* requests);

    bool registerHandler();
    void handleGet(netsnmp_request_info* requests) const;
    bool putCell(netsnmp_request_info* request, const Cell& cell, size_t& answerSize) const;
    void handleGetNext(netsnmp_request_info* requests) const;
    void checkVarbinds(netsnmp_request_info* requests);
    void askOwners(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                   netsnmp_agent_request_info* info, netsnmp_request_info* requests);
    void checkUnchanged(netsnmp_request_info* requests) const;
    int commit(netsnmp_request_info* requests);
    void resume(SetCoordinator::Key key, int index, int errorStatus);

    const CellStore& m_store;
    SetCoordinator& m_coordinator;
    ObjectId m_root;
    size_t m_maxMessage = 0;
    std::map<SetCoordinator::Key, netsnmp_delegated_cache*> m_delegated;
};

} // namespace agent

#endif
