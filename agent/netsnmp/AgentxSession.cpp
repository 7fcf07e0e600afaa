// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/AgentxSession.h"

#include <utility>
#include <vector>

#include "agent/netsnmp/AgentxFacts.h"
#include "agent/netsnmp/CallDeadline.h"
#include "agent/netsnmp/DirectAnswers.h"
#include "agent/netsnmp/MasterStream.h"

// Parts of the agent library; no installed header declares them.
extern "C" int subagent_open_master_session(void);
extern "C" int subagent_startup(int, int, void*, void*);

namespace agent {

namespace {

constexpr long agentxVersion = 193;  // how Net-SNMP marks AgentX sessions
constexpr int defaultPriority = 127; // from RFC 2741

// For these times at most the agent blocks on a hung snmpd: to connect, to open a session and to close it.
constexpr std::chrono::milliseconds connectDeadline(300);
constexpr long openTimeoutUs = 300'000;
constexpr long closeTimeoutUs = 200'000;

// Nothing blocks on these replies. A registration without one costs the session, so it gets plenty of time.
constexpr long replyTimeoutUs = 10'000'000;

} // namespace

AgentxSession::AgentxSession(const QString& address, Clock& clock) : m_address(address)
{
    const std::optional<NamedAddress> named = NamedAddress::of(address);
    if (!named || named->transport.isEmpty()) // a path, then
        return;
    m_address.clear();
    m_hostLookup =
        std::make_unique<HostLookup>(*named, clock, [this](const QString& found) { m_address = found; });
}

QString AgentxSession::defaultAddress()
{
    return QStringLiteral(NETSNMP_AGENTX_SOCKET);
}

void AgentxSession::initialise()
{
    // Switches off Net-SNMP's own pings, connects and reconnects.
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG, &subagent_startup,
                             nullptr, 0);
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_PING_INTERVAL, 0);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_NO_CONNECTION_WARNINGS, 1);
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_SESSION_INIT, &handleCreated, this);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_START, &handleOpened, this);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_STOP, &handleClosed, this);
}

void AgentxSession::prepareToEnd()
{
    // Net-SNMP would free the callbacks' argument, this object, at its shutdown.
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_SESSION_INIT, &handleCreated, this, 1);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_START, &handleOpened, this, 1);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_STOP, &handleClosed, this, 1);
    if (m_session)
        m_session->timeout = closeTimeoutUs;
}

bool AgentxSession::open()
{
    if (!m_address.isEmpty()) {
        netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET,
                              m_address.toLocal8Bit().constData());
        const CallDeadline deadline(connectDeadline);
        if (subagent_open_master_session() == 0 && m_session)
            return true;
    }
    if (m_hostLookup)
        m_hostLookup->start(); // the host may have another address now
    return false;
}

bool AgentxSession::registerTree(const ObjectId& tree)
{
    netsnmp_pdu* request = makeRequest(agentx::Register);
    const std::vector<oid> arcs(tree.begin(), tree.end());
    request->priority = defaultPriority;
    snmp_add_null_var(request, arcs.data(), arcs.size());
    return send(request);
}

bool AgentxSession::ping()
{
    return send(makeRequest(agentx::Ping));
}

void AgentxSession::hangUp()
{
    netsnmp_transport* transport = snmp_sess_transport(snmp_sess_pointer(m_session));
    if (transport)
        shutDownStream(*transport);
}

int AgentxSession::handleCreated(int, int, void* session, void*)
{
    auto* created = static_cast<netsnmp_session*>(session);
    if (created->version == agentxVersion) {
        created->timeout = openTimeoutUs;
        created->retries = 0;
    }
    return SNMPERR_SUCCESS;
}

int AgentxSession::handleOpened(int, int, void* session, void* self)
{
    auto* opened = static_cast<AgentxSession*>(self);
    opened->m_session = static_cast<netsnmp_session*>(session);
    opened->m_session->timeout = replyTimeoutUs;
    takeOverStream(*snmp_sess_transport(snmp_sess_pointer(opened->m_session)), &isPipeBusy);
    answerDirectly(*opened->m_session);
    emit opened->descriptorsChanged();
    return SNMPERR_SUCCESS;
}

int AgentxSession::handleClosed(int, int, void*, void* self)
{
    auto* closed = static_cast<AgentxSession*>(self);
    if (std::exchange(closed->m_session, nullptr))
        emit closed->closed();
    emit closed->descriptorsChanged();
    return SNMPERR_SUCCESS;
}

int AgentxSession::handleReply(int operation, netsnmp_session*, int, netsnmp_pdu* reply, void* self)
{
    auto* asked = static_cast<AgentxSession*>(self);
    if (operation == NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE && reply->command == agentx::Response)
        emit asked->answered(reply->errstat);
    else
        emit asked->unanswered();
    return 1; // done with the request
}

netsnmp_pdu* AgentxSession::makeRequest(int command) const
{
    netsnmp_pdu* request = snmp_pdu_create(command);
    request->sessid = m_session->sessid;
    request->time = 0;
    return request;
}

bool AgentxSession::send(netsnmp_pdu* request)
{
    if (snmp_async_send(m_session, request, &handleReply, this) != 0)
        return true;
    snmp_free_pdu(request);
    return false;
}

} // namespace agent
