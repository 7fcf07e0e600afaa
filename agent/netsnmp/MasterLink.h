// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MASTERLINK_H
#define VIGIL_AGENT_NETSNMP_MASTERLINK_H

#include <QObject>
#include <QString>

#include "agent/core/Clock.h"
#include "agent/core/ObjectId.h"
#include "agent/core/Timer.h"
#include "agent/netsnmp/MasterSession.h"

namespace agent {

/// Keeps the agent joined to the host's snmpd: joins, registers the subtree, pings, and joins again after a
/// loss. It also registers the agent's own objects if they lie outside the subtree.
///
///     State                  Event                              Next state
///     NotJoined              step: the session opens            Registering
///                            step: it does not open             NotJoined
///     Registering            accepted                           RegisteringOwnObjects, or Serving if
///                                                               the subtree contains them
///                            refused                            Refused
///     Refused                step                               Registering
///     RegisteringOwnObjects  accepted or refused                Serving
///     Serving                step                               Pinging
///     Pinging                reply, or no reply in time         Serving
///                            reply with an error                Closing
///     Registering…           no reply in time, session unknown  Closing
///     any of these           a request cannot be sent           Closing
///     any of these           the session has closed             NotJoined
///     Closing                the session has closed             NotJoined
///
/// A step comes every second.
///
/// Ownership: session and clock must outlive the link.
/// Failure: each problem is retried for as long as the link lives. The log has one line for each problem, not
/// for each attempt.
class MasterLink : public QObject
{
    Q_OBJECT

public:
    /// address is where snmpd listens, for messages.
    MasterLink(MasterSession& session, Clock& clock, const QString& address, const ObjectId& subtree);

    /// Joins for the first time as soon as the event loop runs.
    void start();

    /// From now on nothing is sent.
    void stop();

    /// snmpd has accepted the registration.
    bool isServing() const { return m_state == State::Serving || m_state == State::Pinging; }

    /// How often it has joined again after a loss.
    quint64 rejoins() const { return m_joins > 0 ? m_joins - 1 : 0; }

    /// The state in one line, for the operator.
    QString statusText() const;

signals:
    void statusChanged();

private:
    enum class State {
        NotJoined,
        Registering,
        Refused,
        RegisteringOwnObjects,
        Serving,
        Pinging,
        Closing, ///< given up, but Net-SNMP still holds the session
    };

    void takeStep();
    void join();
    void requestRegistration(State state);
    void ping();
    void serve();
    void hangUp();
    void lose(State next);

    void handleAnswered(long error);
    void handleRegistration(long error);
    void handleOwnRegistration(long error);
    void handlePing(long error);
    void handleUnanswered();

    void enter(State state);
    const ObjectId& treeToRegister() const;
    void warnOnce(bool& isWarned, const QString& message);

    MasterSession& m_session;
    Clock& m_clock;
    const QString m_address;
    const ObjectId m_subtree;
    State m_state = State::NotJoined;
    quint64 m_joins = 0;
    bool m_isWarned = false; ///< of the present problem
    bool m_isOwnRegistrationWarned = false;
    Timer m_stepTimer;
};

} // namespace agent

#endif
