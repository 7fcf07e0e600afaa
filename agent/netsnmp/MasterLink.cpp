// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/MasterLink.h"

#include <utility>
#include <vector>

#include <sys/socket.h>

#include "agent/core/Log.h"
#include "agent/netsnmp/CallDeadline.h"
#include "agent/netsnmp/MasterStream.h"

// Parts of the agent library, which declares them in no header that is installed.
extern "C" int subagent_open_master_session(void);
extern "C" int subagent_startup(int, int, void*, void*);

namespace agent {

namespace {

// RFC 2741 and how Net-SNMP tells its sessions apart; its installed headers leave both out.
constexpr long agentxVersion = 193;
constexpr int registerCommand = 3;
constexpr int pingCommand = 13;
constexpr int responseCommand = 18;
constexpr int defaultPriority = 127;
constexpr long notOpenError = 257;

constexpr int stepMs = 1000;

// How long the agent stands still at most while it connects to a snmpd that does not accept, opens a session
// that is not answered, or closes one; the event loop has to wait for all three.
constexpr std::chrono::milliseconds joinDeadline(300);
constexpr long openTimeoutUs = 300'000;
constexpr long closeTimeoutUs = 200'000;

// Nothing waits for these answers, and one that is given up is still on its way.
constexpr long answerTimeoutUs = 10'000'000;

} // namespace

MasterLink::MasterLink(const QString& address, const ObjectId& subtree)
    : m_address(address), m_subtree(subtree)
{
    m_timer.setInterval(stepMs);
    connect(&m_timer, &QTimer::timeout, this, &MasterLink::takeStep);
}

void MasterLink::start()
{
    // No pings, no connecting and no reconnecting of Net-SNMP's own.
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_POST_READ_CONFIG, &subagent_startup,
                             nullptr, 0);
    netsnmp_ds_set_int(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_AGENTX_PING_INTERVAL, 0);
    netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_NO_CONNECTION_WARNINGS, 1);
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET,
                          m_address.toLocal8Bit().constData());
    snmp_register_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_SESSION_INIT, &handleSessionCreated, this);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_START, &handleOpened, this);
    snmp_register_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_STOP, &handleClosed, this);
    m_timer.start();
    QTimer::singleShot(0, this, &MasterLink::takeStep);
}

void MasterLink::prepareToEnd()
{
    m_timer.stop();
    // At its shutdown Net-SNMP frees what is registered with a callback.
    snmp_unregister_callback(SNMP_CALLBACK_LIBRARY, SNMP_CALLBACK_SESSION_INIT, &handleSessionCreated, this,
                             1);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_START, &handleOpened, this, 1);
    snmp_unregister_callback(SNMP_CALLBACK_APPLICATION, SNMPD_CALLBACK_INDEX_STOP, &handleClosed, this, 1);
    if (m_session)
        m_session->timeout = closeTimeoutUs;
}

QString MasterLink::statusText() const
{
    switch (m_state) {
    case State::Waiting:
        return QStringLiteral("waiting for snmpd at %1").arg(m_address);
    case State::Registering:
    case State::RegisteringOwnObjects:
        return QStringLiteral("registering %1 with snmpd at %2").arg(toText(treeToRegister()), m_address);
    case State::Serving:
        return QStringLiteral("serving %1 through snmpd at %2").arg(toText(m_subtree), m_address);
    }
    return QString();
}

int MasterLink::handleSessionCreated(int, int, void* session, void*)
{
    auto* created = static_cast<netsnmp_session*>(session);
    if (created->version == agentxVersion) {
        created->timeout = openTimeoutUs;
        created->retries = 0;
    }
    return SNMPERR_SUCCESS;
}

int MasterLink::handleOpened(int, int, void* session, void* self)
{
    auto* link = static_cast<MasterLink*>(self);
    link->m_session = static_cast<netsnmp_session*>(session);
    link->m_session->timeout = answerTimeoutUs;
    takeOverStream(*snmp_sess_transport(snmp_sess_pointer(link->m_session)));
    link->m_asked = 0;
    link->m_isProblemTold = false;
    link->change(State::Registering);
    QTimer::singleShot(0, link, &MasterLink::takeStep);
    emit link->sessionChanged();
    return SNMPERR_SUCCESS;
}

int MasterLink::handleClosed(int, int, void*, void* self)
{
    auto* link = static_cast<MasterLink*>(self);
    link->m_session = nullptr;
    if (link->m_state == State::Serving)
        log::warning(QStringLiteral("the connection to snmpd at %1 is lost; the agent keeps all values and "
                                    "joins again when snmpd is back")
                         .arg(link->m_address));
    link->m_isProblemTold = true;
    link->change(State::Waiting);
    emit link->sessionChanged();
    return SNMPERR_SUCCESS;
}

void MasterLink::takeStep()
{
    if (!m_session)
        tryToJoin();
    else if (m_asked == 0)
        ask(m_state == State::Serving ? pingCommand : registerCommand);
}

void MasterLink::tryToJoin()
{
    const CallDeadline deadline(joinDeadline);
    if (subagent_open_master_session() == 0 || m_isProblemTold)
        return;
    m_isProblemTold = true;
    log::warning(
        QStringLiteral("cannot join snmpd at %1; check that it runs, that its configuration has \"master "
                       "agentx\", and that this user may open its socket. Retrying every second")
            .arg(m_address));
}

void MasterLink::ask(int command)
{
    netsnmp_pdu* question = snmp_pdu_create(command);
    question->sessid = m_session->sessid;
    question->time = 0;
    if (command == registerCommand) {
        const ObjectId& tree = treeToRegister();
        const std::vector<oid> subtree(tree.begin(), tree.end());
        question->priority = defaultPriority;
        snmp_add_null_var(question, subtree.data(), subtree.size());
    }
    m_asked = command;
    if (snmp_async_send(m_session, question, &handleAnswer, this) == 0) {
        snmp_free_pdu(question);
        hangUp();
    }
}

int MasterLink::handleAnswer(int operation, netsnmp_session*, int, netsnmp_pdu* answer, void* self)
{
    auto* link = static_cast<MasterLink*>(self);
    const int asked = std::exchange(link->m_asked, 0);
    if (operation == NETSNMP_CALLBACK_OP_TIMED_OUT)
        link->handleSilence();
    else if (operation != NETSNMP_CALLBACK_OP_RECEIVED_MESSAGE || answer->command != responseCommand)
        return 1;
    else if (asked == registerCommand)
        link->handleRegistration(answer->errstat);
    else
        link->handlePing(answer->errstat);
    return 1;
}

const ObjectId& MasterLink::treeToRegister() const
{
    return m_state == State::RegisteringOwnObjects ? agentMibRoot() : m_subtree;
}

void MasterLink::handleRegistration(long error)
{
    if (m_state == State::RegisteringOwnObjects) {
        handleOwnRegistration(error);
    } else if (error == SNMP_ERR_NOERROR && isInTree(m_subtree, agentMibRoot())) {
        serve();
    } else if (error == SNMP_ERR_NOERROR) {
        change(State::RegisteringOwnObjects);
        takeStep();
    } else if (error == notOpenError) {
        hangUp();
    } else if (!m_isProblemTold) {
        m_isProblemTold = true;
        log::warning(
            QStringLiteral(
                "snmpd at %1 refuses to register %2 (AgentX error %3); most likely another subagent has "
                "registered it, or snmpd has not yet noticed the end of this agent's previous run. Retrying "
                "every second; if this persists, stop the other subagent or use --subtree")
                .arg(m_address, toText(m_subtree))
                .arg(error));
    }
}

/// Only one agent can have them; another one serves its applications all the same.
void MasterLink::handleOwnRegistration(long error)
{
    if (error == notOpenError)
        return hangUp();
    if (error != SNMP_ERR_NOERROR && !std::exchange(m_isOwnProblemTold, true))
        log::warning(QStringLiteral("snmpd at %1 refuses to register this agent's own objects at %2 (AgentX "
                                    "error %3); most likely another vigil-agent has registered its own. "
                                    "Managers see this agent's applications, but not the agent itself")
                         .arg(m_address, toText(agentMibRoot()))
                         .arg(error));
    serve();
}

void MasterLink::serve()
{
    m_isProblemTold = false;
    change(State::Serving);
    log::info(statusText());
}

void MasterLink::handlePing(long error)
{
    m_isProblemTold = false;
    if (error != SNMP_ERR_NOERROR)
        hangUp();
}

void MasterLink::handleSilence()
{
    if (!m_isProblemTold)
        log::warning(
            QStringLiteral(
                "snmpd at %1 does not answer; managers get no values until it recovers or is restarted")
                .arg(m_address));
    m_isProblemTold = true;
    if (m_state != State::Serving)
        hangUp(); // the answer may still come, and after another question nobody could tell to which
}

/// Net-SNMP finds the connection closed, as if snmpd had ended, and does what is to be done then.
void MasterLink::hangUp()
{
    netsnmp_transport* transport = snmp_sess_transport(snmp_sess_pointer(m_session));
    if (transport)
        shutdown(transport->sock, SHUT_RDWR);
}

void MasterLink::change(State state)
{
    m_state = state;
    emit statusChanged();
}

} // namespace agent
