// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/serving/SubtreeHandler.h"

#include <algorithm>
#include <array>
#include <utility>

#include "agent/netsnmp/AgentxLimit.h"
#include "agent/serving/SetLine.h"
#include "agent/serving/VarbindValue.h"

namespace agent {

namespace {

constexpr char keyDataName[] = "vigil-set";

/// Ends the coordinator's SET together with Net-SNMP's request, in success or failure.
struct RequestKey
{
    SetCoordinator& coordinator;
    SetCoordinator::Key key;

    static void release(void* data)
    {
        auto* self = static_cast<RequestKey*>(data);
        self->coordinator.drop(self->key);
        delete self;
    }
};

/// Without an allocation, because a walk does this for each cell. CellLimits refuses longer identifiers.
void setName(netsnmp_variable_list& varbind, const ObjectId& id)
{
    std::array<oid, maxArcs> name = {};
    const size_t length = std::min(id.size(), maxArcs);
    std::copy_n(id.begin(), length, name.begin());
    snmp_set_var_objid(&varbind, name.data(), length);
}

SetCoordinator::Key keyOf(netsnmp_request_info* requests)
{
    const auto* data = static_cast<RequestKey*>(netsnmp_request_get_list_data(requests, keyDataName));
    return data ? data->key : 0;
}

} // namespace

SubtreeHandler::SubtreeHandler(const CellStore& store, SetCoordinator& coordinator)
    : m_store(store), m_coordinator(coordinator)
{
    connect(&m_coordinator, &SetCoordinator::decided, this, &SubtreeHandler::resume);
}

SubtreeHandler::~SubtreeHandler()
{
    for (const auto& [key, cache] : m_delegated)
        netsnmp_free_delegated_cache(cache);
}

Error SubtreeHandler::registerSubtree(const ObjectId& root)
{
    m_root = root;
    if (registerHandler())
        return {};
    return Error(
        QStringLiteral("Net-SNMP refuses the subtree %1; its message above says why").arg(toText(root)));
}

bool SubtreeHandler::registerHandler()
{
    const std::vector<oid> rootOid(m_root.begin(), m_root.end());
    netsnmp_handler_registration* registration = netsnmp_create_handler_registration(
        "vigil", &SubtreeHandler::handle, rootOid.data(), rootOid.size(), HANDLER_CAN_RWRITE);
    if (!registration)
        return false;
    registration->handler->myvoid = this;
    return netsnmp_register_handler(registration) == SNMPERR_SUCCESS;
}

int SubtreeHandler::handle(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                           netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    auto* self = static_cast<SubtreeHandler*>(handler->myvoid);
    switch (info->mode) {
    case MODE_GET:
        self->handleGet(requests);
        break;
    case MODE_GETNEXT:
        self->handleGetNext(requests);
        break;
    case MODE_SET_RESERVE1:
        SetLine::begin(*info, requests, self->m_store);
        self->checkVarbinds(requests);
        break;
    case MODE_SET_RESERVE2:
        self->askOwners(handler, registration, info, requests);
        break;
    case MODE_SET_ACTION:
        self->checkUnchanged(requests);
        break;
    case MODE_SET_COMMIT:
        return self->commit(requests);
    case MODE_SET_FREE:
    case MODE_SET_UNDO:
        self->m_coordinator.drop(keyOf(requests));
        break;
    default:
        return SNMP_ERR_GENERR;
    }
    return SNMP_ERR_NOERROR;
}

void SubtreeHandler::handleGet(netsnmp_request_info* requests) const
{
    size_t answerSize = AgentxLimit::emptyAnswer;
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        const Cell* cell = m_store.find(objectIdOf(*request->requestvb));
        if (!cell)
            netsnmp_request_set_error(request, SNMP_NOSUCHINSTANCE);
        else if (!putCell(request, *cell, answerSize))
            return;
    }
}

/// False if the answer is full; it then holds an error. Adding the rest first could take much memory.
bool SubtreeHandler::putCell(netsnmp_request_info* request, const Cell& cell, size_t& answerSize) const
{
    putValue(request->requestvb, cell.served());
    answerSize += AgentxLimit::sizeOf(*request->requestvb);
    if (m_maxMessage == 0 || answerSize <= m_maxMessage)
        return true;
    netsnmp_request_set_error(request, SNMP_ERR_TOOBIG);
    return false;
}

void SubtreeHandler::handleGetNext(netsnmp_request_info* requests) const
{
    size_t answerSize = AgentxLimit::emptyAnswer;
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        const ObjectId asked = objectIdOf(*request->requestvb);
        const CellStore::Entry* entry = nullptr;
        if (asked < m_root) // Net-SNMP checks the end of the subtree, but not its start
            entry = m_store.findAtOrNext(m_root);
        else
            entry = request->inclusive ? m_store.findAtOrNext(asked) : m_store.findNext(asked);
        if (!entry)
            continue; // Net-SNMP goes on after the subtree
        setName(*request->requestvb, entry->first);
        if (!putCell(request, entry->second, answerSize))
            return;
    }
}

void SubtreeHandler::checkVarbinds(netsnmp_request_info* requests)
{
    bool isFailedAtOnce = false;
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        SetVarbind varbind{objectIdOf(*request->requestvb), {}};
        const bool exists = m_store.find(varbind.id);
        int status = exists ? readValue(*request->requestvb, varbind.value) : SNMP_ERR_NOCREATION;
        if (status == SNMP_ERR_NOERROR)
            status = m_coordinator.check(varbind);
        if (status == SNMP_ERR_NOERROR)
            continue;
        SetLine::setAnswer(requests, status);
        netsnmp_request_set_error(request, status);
        isFailedAtOnce |= status == SNMP_ERR_RESOURCEUNAVAILABLE && m_coordinator.isUnresponsive(varbind.id);
    }
    if (isFailedAtOnce)
        m_coordinator.countFailedAtOnce();
}

void SubtreeHandler::askOwners(netsnmp_mib_handler* handler, netsnmp_handler_registration* registration,
                               netsnmp_agent_request_info* info, netsnmp_request_info* requests)
{
    std::vector<SetVarbind> varbinds;
    for (netsnmp_request_info* request = requests; request; request = request->next) {
        SetVarbind varbind{objectIdOf(*request->requestvb), {}};
        readValue(*request->requestvb, varbind.value);
        varbinds.push_back(std::move(varbind));
        request->delegated = REQUEST_IS_DELEGATED;
    }
    const SetCoordinator::Key key = m_coordinator.begin(std::move(varbinds));
    netsnmp_request_add_list_data(
        requests,
        netsnmp_create_data_list(keyDataName, new RequestKey{m_coordinator, key}, &RequestKey::release));
    m_delegated[key] = netsnmp_create_delegated_cache(handler, registration, info, requests, nullptr);
}

void SubtreeHandler::checkUnchanged(netsnmp_request_info* requests) const
{
    if (m_coordinator.isStillValid(keyOf(requests)))
        return;
    SetLine::setAnswer(requests, SNMP_ERR_RESOURCEUNAVAILABLE);
    netsnmp_request_set_error(requests, SNMP_ERR_RESOURCEUNAVAILABLE);
}

int SubtreeHandler::commit(netsnmp_request_info* requests)
{
    const int status = m_coordinator.commit(keyOf(requests)) ? SNMP_ERR_NOERROR : SNMP_ERR_COMMITFAILED;
    SetLine::setAnswer(requests, status);
    return status;
}

void SubtreeHandler::resume(SetCoordinator::Key key, int index, int errorStatus)
{
    const auto delegated = m_delegated.find(key);
    if (delegated == m_delegated.end())
        return;
    netsnmp_delegated_cache* cache = delegated->second;
    m_delegated.erase(delegated);
    if (netsnmp_handler_check_cache(cache)) {
        if (errorStatus != SNMP_ERR_NOERROR)
            SetLine::setAnswer(cache->requests, errorStatus);
        int position = 0;
        for (netsnmp_request_info* request = cache->requests; request; request = request->next) {
            request->delegated = REQUEST_IS_NOT_DELEGATED;
            if (position++ == index && errorStatus != SNMP_ERR_NOERROR)
                netsnmp_request_set_error(request, errorStatus);
        }
    }
    netsnmp_free_delegated_cache(cache);
    netsnmp_check_outstanding_agent_requests();
}

} // namespace agent
