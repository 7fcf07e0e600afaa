// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/MasterLink.h"

#include <utility>

#include "agent/core/Log.h"

namespace agent {

namespace {

constexpr qint64 stepMs = 1000;

} // namespace

MasterLink::MasterLink(MasterSession& session, Clock& clock, const QString& address, const ObjectId& subtree)
    : m_session(session), m_clock(clock), m_address(address), m_subtree(subtree), m_stepTimer(clock, [this] {
          takeStep();
      })
{
    connect(&m_session, &MasterSession::answered, this, &MasterLink::handleAnswered);
    connect(&m_session, &MasterSession::unanswered, this, &MasterLink::handleUnanswered);
    connect(&m_session, &MasterSession::closed, this, [this] { lose(State::NotJoined); });
}

void MasterLink::start()
{
    m_stepTimer.startRepeating(stepMs);
    m_clock.callAfter(0, this, [this] { takeStep(); });
}

void MasterLink::stop()
{
    m_stepTimer.stop();
}

QString MasterLink::statusText() const
{
    switch (m_state) {
    case State::NotJoined:
    case State::Closing:
        return QStringLiteral("waiting for snmpd at %1").arg(m_address);
    case State::Registering:
    case State::Refused:
    case State::RegisteringOwnObjects:
        return QStringLiteral("registering %1 with snmpd at %2").arg(toText(treeToRegister()), m_address);
    case State::Serving:
    case State::Pinging:
        return QStringLiteral("serving %1 through snmpd at %2").arg(toText(m_subtree), m_address);
    }
    return QString();
}

void MasterLink::takeStep()
{
    switch (m_state) {
    case State::NotJoined:
        join();
        break;
    case State::Refused:
        requestRegistration(State::Registering);
        break;
    case State::Serving:
        ping();
        break;
    case State::Registering:
    case State::RegisteringOwnObjects:
    case State::Pinging:
    case State::Closing:
        break; // an answer or the end of the session is pending
    }
}

void MasterLink::join()
{
    if (m_session.open()) {
        ++m_joins;
        m_isWarned = false;
        requestRegistration(State::Registering);
    } else {
        warnOnce(m_isWarned,
                 QStringLiteral("cannot join snmpd at %1; check that it runs, that its configuration has "
                                "\"master agentx\", and that this user may open its socket. Retrying every "
                                "second")
                     .arg(m_address));
    }
}

void MasterLink::requestRegistration(State state)
{
    enter(state);
    if (!m_session.registerTree(treeToRegister()))
        hangUp();
}

void MasterLink::ping()
{
    enter(State::Pinging);
    if (!m_session.ping())
        hangUp();
}

void MasterLink::serve()
{
    m_isWarned = false;
    enter(State::Serving);
    log::info(statusText());
}

void MasterLink::hangUp()
{
    if (m_state == State::NotJoined)
        return; // the session closed while the request was sent
    lose(State::Closing);
    m_session.hangUp();
}

void MasterLink::lose(State next)
{
    if (isServing())
        log::warning(QStringLiteral("the connection to snmpd at %1 is lost; the agent keeps all values and "
                                    "joins again when snmpd is back")
                         .arg(m_address));
    m_isWarned = true; // the attempts to join again fail for the same reason
    enter(next);
}

void MasterLink::handleAnswered(long error)
{
    if (m_state == State::Registering)
        handleRegistration(error);
    else if (m_state == State::RegisteringOwnObjects)
        handleOwnRegistration(error);
    else if (m_state == State::Pinging)
        handlePing(error);
}

void MasterLink::handleRegistration(long error)
{
    if (error == MasterSession::notOpenError) {
        hangUp();
    } else if (error != MasterSession::noError) {
        enter(State::Refused);
        warnOnce(m_isWarned,
                 QStringLiteral("snmpd at %1 refuses to register %2 (AgentX error %3); most likely another "
                                "subagent has registered it, or snmpd has not yet noticed the end of this "
                                "agent's previous run. Retrying every second; if this persists, stop the "
                                "other subagent or use --subtree")
                     .arg(m_address, toText(m_subtree))
                     .arg(error));
    } else if (isInTree(m_subtree, agentMibRoot())) {
        serve();
    } else {
        requestRegistration(State::RegisteringOwnObjects);
    }
}

/// Only one agent of a host can register these objects. The others still serve their applications.
void MasterLink::handleOwnRegistration(long error)
{
    if (error == MasterSession::notOpenError)
        return hangUp();
    if (error != MasterSession::noError)
        warnOnce(m_isOwnRegistrationWarned,
                 QStringLiteral("snmpd at %1 refuses to register this agent's own objects at %2 (AgentX "
                                "error %3); most likely another vigil-agent has registered its own. "
                                "Managers see this agent's applications, but not the agent itself")
                     .arg(m_address, toText(agentMibRoot()))
                     .arg(error));
    serve();
}

void MasterLink::handlePing(long error)
{
    m_isWarned = false;
    if (error == MasterSession::noError)
        enter(State::Serving);
    else
        hangUp();
}

void MasterLink::handleUnanswered()
{
    warnOnce(m_isWarned, QStringLiteral("snmpd at %1 does not answer; managers get no values until it "
                                        "recovers or is restarted")
                             .arg(m_address));
    if (m_state == State::Pinging)
        enter(State::Serving);
    else if (m_state != State::Closing)
        hangUp(); // a late reply could be mistaken for the reply to the next request
}

void MasterLink::enter(State state)
{
    const QString before = statusText();
    m_state = state;
    if (statusText() != before)
        emit statusChanged();
}

const ObjectId& MasterLink::treeToRegister() const
{
    return m_state == State::RegisteringOwnObjects ? agentMibRoot() : m_subtree;
}

void MasterLink::warnOnce(bool& isWarned, const QString& message)
{
    if (!std::exchange(isWarned, true))
        log::warning(message);
}

} // namespace agent
