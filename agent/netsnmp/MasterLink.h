// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_MASTERLINK_H
#define VIGIL_AGENT_NETSNMP_MASTERLINK_H

#include <QObject>
#include <QString>
#include <QTimer>

#include "agent/core/ObjectId.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// The AgentX session with the host's snmpd, and the subtree that is registered in it.
///
/// Purpose: joins, registers (the agent's own objects, too, when they lie outside of the subtree), finds out
/// when the session is lost or worth nothing any more, and joins again, for as long as it lives. Net-SNMP
/// could do that itself, but it would neither notice that a registration is refused nor keep from waiting,
/// with everything else of the agent, for a snmpd that hangs. So it is told not to; it opens and closes
/// sessions when it is told, and what goes through them is sent from here.
///
/// Threads: the agent has one.
/// Ownership: Net-SNMP's state is global: one object in a process. start() goes between init_agent() and
/// init_snmp(), prepareToEnd() before snmp_shutdown().
/// Failure: there is none that lasts. The log has one line for each change, not one for each attempt.
class MasterLink : public QObject
{
    Q_OBJECT

public:
    /// address in Net-SNMP's notation.
    MasterLink(const QString& address, const ObjectId& subtree);

    void start();

    /// Net-SNMP is about to be shut down and with it the session. A snmpd that hangs is not waited for.
    void prepareToEnd();

    /// One line about how things stand, for whoever looks after the agent.
    QString statusText() const;

signals:
    /// The session is another one than before, or none. Descriptors have changed with it.
    void sessionChanged();
    void statusChanged();

private:
    enum class State { Waiting, Registering, RegisteringOwnObjects, Serving };

    static int handleSessionCreated(int, int, void* session, void* self);
    static int handleOpened(int, int, void* session, void* self);
    static int handleClosed(int, int, void* session, void* self);
    static int handleAnswer(int operation, netsnmp_session* session, int request, netsnmp_pdu* answer,
                            void* self);

    void takeStep();
    void tryToJoin();
    void ask(int command);
    const ObjectId& treeToRegister() const;
    void handleRegistration(long error);
    void handleOwnRegistration(long error);
    void serve();
    void handlePing(long error);
    void handleSilence();
    void hangUp();
    void change(State state);

    const QString m_address;
    const ObjectId m_subtree;
    netsnmp_session* m_session = nullptr;
    State m_state = State::Waiting;
    int m_asked = 0; ///< the command that has not been answered yet
    bool m_isProblemTold = false;
    bool m_isOwnProblemTold = false;
    QTimer m_timer;
};

} // namespace agent

#endif
