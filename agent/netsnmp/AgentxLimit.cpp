// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/AgentxLimit.h"

#include <QtEndian>

#include <algorithm>
#include <utility>

#include "agent/netsnmp/AgentxFacts.h"

namespace agent {

namespace {

using agentx::commandAt;
using agentx::flagsAt;
using agentx::headerSize;
using agentx::lengthAt;
using agentx::transactionAt;

// From RFC 2741.
constexpr int errorAt = 24;
constexpr int indexAt = 26;
constexpr char contextFollows = 0x08;
constexpr char networkOrder = 0x10;
constexpr quint16 unsupportedContext = 262;
constexpr size_t wordSize = 4;

template <typename Number>
Number numberAt(const QByteArray& message, int position)
{
    const char* bytes = message.constData() + position;
    return message.at(flagsAt) & networkOrder ? qFromBigEndian<Number>(bytes)
                                              : qFromLittleEndian<Number>(bytes);
}

template <typename Number>
void putNumber(QByteArray& message, int position, Number number)
{
    char* bytes = message.data() + position;
    if (message.at(flagsAt) & networkOrder)
        qToBigEndian(number, bytes);
    else
        qToLittleEndian(number, bytes);
}

/// An answer to the message with this header. The error needs an index: snmpd turns one without into genErr.
QByteArray errorAnswer(const QByteArray& header, quint16 error, quint16 index)
{
    QByteArray answer = header.left(headerSize) + QByteArray(AgentxLimit::emptyAnswer - headerSize, '\0');
    answer[commandAt] = agentx::Response;
    answer[flagsAt] = static_cast<char>(header.at(flagsAt) & ~contextFollows);
    putNumber<quint32>(answer, lengthAt, AgentxLimit::emptyAnswer - headerSize);
    putNumber<quint16>(answer, errorAt, error);
    putNumber<quint16>(answer, indexAt, index);
    return answer;
}

size_t sizeOfIdentifier(const oid* arcs, size_t count)
{
    constexpr size_t prefixArcs = 5; // 1.3.6.1.x takes no space of its own
    const oid prefix[] = {1, 3, 6, 1};
    const bool isShortened =
        count >= prefixArcs && std::equal(std::begin(prefix), std::end(prefix), arcs) && arcs[4] < 256;
    return wordSize + wordSize * (isShortened ? count - prefixArcs : count);
}

size_t sizeOfText(size_t length)
{
    return wordSize + (length + wordSize - 1) / wordSize * wordSize;
}

size_t sizeOfValue(const netsnmp_variable_list& varbind)
{
    switch (varbind.type) {
    case ASN_OCTET_STR:
        return sizeOfText(varbind.val_len);
    case ASN_NULL:
    case SNMP_NOSUCHOBJECT:
    case SNMP_NOSUCHINSTANCE:
    case SNMP_ENDOFMIBVIEW:
        return 0;
    default:
        return wordSize;
    }
}

} // namespace

size_t AgentxLimit::sizeOf(const netsnmp_variable_list& varbind)
{
    return wordSize + sizeOfIdentifier(varbind.name, varbind.name_length) + sizeOfValue(varbind);
}

QByteArray AgentxLimit::receive(const QByteArray& bytes)
{
    QByteArray accepted;
    int position = 0;
    while (position < bytes.size() && !m_isBroken) {
        if (m_bodyLeft == 0) {
            const int missing = headerSize - m_header.size();
            m_header += bytes.mid(position, missing);
            position += std::min(missing, bytes.size() - position);
            if (m_header.size() == headerSize)
                accepted += takeHeader();
            continue;
        }
        const auto part =
            static_cast<int>(std::min<quint64>(m_bodyLeft, static_cast<quint64>(bytes.size() - position)));
        if (!m_isDropped)
            accepted += bytes.mid(position, part);
        position += part;
        m_bodyLeft -= static_cast<quint64>(part);
    }
    return accepted;
}

/// Returns the header if Net-SNMP gets the message.
QByteArray AgentxLimit::takeHeader()
{
    const QByteArray header = std::exchange(m_header, QByteArray());
    m_bodyLeft = numberAt<quint32>(header, lengthAt);
    m_isBroken = header.at(agentx::versionAt) != agentx::version;
    if (m_isBroken)
        return {};
    const bool isTooLong = headerSize + m_bodyLeft > maxMessage;
    const bool hasContext = header.at(flagsAt) & contextFollows;
    const bool isEndOfRefused = header.at(commandAt) == agentx::CleanupSet &&
                                numberAt<quint32>(header, transactionAt) == m_refusedSet;
    m_isDropped = isTooLong || hasContext || isEndOfRefused;
    if (isTooLong || hasContext)
        refuse(header, hasContext ? unsupportedContext : SNMP_ERR_TOOBIG);
    return m_isDropped ? QByteArray() : header;
}

void AgentxLimit::refuse(const QByteArray& header, quint16 error)
{
    if (header.at(commandAt) == agentx::TestSet)
        m_refusedSet = numberAt<quint32>(header, transactionAt);
    if (header.at(commandAt) != agentx::Response)
        m_answers += errorAnswer(header, error, 1);
}

QByteArray AgentxLimit::takeAnswers()
{
    return std::exchange(m_answers, QByteArray());
}

QByteArray AgentxLimit::limited(const QByteArray& message)
{
    if (message.size() <= maxMessage || message.at(commandAt) != agentx::Response)
        return message;
    const auto error = numberAt<quint16>(message, errorAt);
    if (error != SNMP_ERR_NOERROR)
        return errorAnswer(message, error, numberAt<quint16>(message, indexAt));
    return errorAnswer(message, SNMP_ERR_TOOBIG, 1);
}

} // namespace agent
