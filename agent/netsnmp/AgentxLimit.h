// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_AGENTXLIMIT_H
#define VIGIL_AGENT_NETSNMP_AGENTXLIMIT_H

#include <QByteArray>

#include <optional>

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Keeps the messages between the agent and snmpd within the length that Net-SNMP parses.
///
/// Net-SNMP ignores a longer message, on both sides. snmpd then waits for the answer and closes the session
/// after some seconds. Any manager could bring that about with one request. Here a request beyond the limit
/// is answered with tooBig before Net-SNMP sees it, and an answer beyond the limit becomes tooBig, too.
///
/// A request with a context gets an error as well: the agent registers none, and Net-SNMP reads beyond the
/// end of a context's name.
///
/// Failure: once isBroken(), the stream has no next message and must be closed.
/// Ownership: one object for each connection to snmpd.
class AgentxLimit
{
public:
    static constexpr int maxMessage = 65'536;

    /// The length of an answer without varbinds.
    static constexpr int emptyAnswer = 28;

    /// receive() can return this number of bytes more than it takes: the start of a header, held back.
    static constexpr int maxHeldBack = 19;

    /// The length of the varbind in a message.
    static size_t sizeOf(const netsnmp_variable_list& varbind);

    /// Takes bytes from snmpd. Returns those for Net-SNMP, without the refused messages.
    QByteArray receive(const QByteArray& bytes);

    /// The last header was not one of AgentX. Everything after it was dropped.
    bool isBroken() const { return m_isBroken; }

    /// The answers to the requests left out since the last call.
    QByteArray takeAnswers();

    /// Returns the bytes to send for a message of Net-SNMP: the message, or an answer with an error.
    static QByteArray limited(const QByteArray& message);

private:
    QByteArray takeHeader();
    void refuse(const QByteArray& header, quint16 error);

    QByteArray m_header;      // the incomplete one at the end of the bytes
    quint64 m_bodyLeft = 0;   // of the message after its header
    bool m_isDropped = false; // that message
    bool m_isBroken = false;
    QByteArray m_answers;
    std::optional<quint32> m_refusedSet; // its transaction: snmpd still sends the end of it
};

} // namespace agent

#endif
