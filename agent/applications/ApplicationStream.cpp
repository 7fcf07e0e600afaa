// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationStream.h"

#include "agent/applications/RecordCheck.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

namespace agent {

namespace {

// Far beyond what SNMP carries. Reading millions of arcs would hold everybody up.
constexpr size_t maxIdentifierBytes = 65'536;

constexpr int maxQuoted = 100;

/// A record that names no object. Thrown as the decoder throws what it cannot read.
ObjectId identifierOf(const std::string& text)
{
    if (text.size() > maxIdentifierBytes)
        throw QStringLiteral("an identifier is %1 bytes long").arg(text.size());
    const std::optional<ObjectId> id = fromRelativeText(text);
    if (!id)
        throw QStringLiteral("an identifier is not numeric: %1")
            .arg(QString::fromStdString(text).left(maxQuoted));
    return *id;
}

} // namespace

QString ApplicationStream::receive(const QByteArray& bytes)
{
    m_frames.append(bytes);
    FrameAssembler::Frame frame;
    FrameAssembler::Result result = m_frames.next(frame);
    while (result == FrameAssembler::Result::Complete) {
        const QString problem = recordProblem(frame);
        if (!problem.isEmpty())
            return problem;
        result = m_frames.next(frame);
    }
    m_frames.discardTaken();
    return result == FrameAssembler::Result::Malformed ? m_frames.problem() : QString();
}

QString ApplicationStream::recordProblem(const FrameAssembler::Frame& frame)
{
    QString problem = agent::recordProblem(frame.header.dataType, frame.payload);
    if (!problem.isEmpty())
        return problem;
    try {
        handleRecord(frame);
    } catch (const QString& message) {
        return message;
    }
    return QString();
}

void ApplicationStream::handleRecord(const FrameAssembler::Frame& frame)
{
    const qint64 callbackId = frame.header.clientCallbackId;
    const int dataType = frame.header.dataType;
    const bool isNotable = callbackId == base::ValueAndNotify;
    const bool isValue = callbackId == base::PlainValue || isNotable;
    if (isValue && dataType == base::SnmpIntType) {
        handleInt(frame.payload, isNotable);
    } else if (isValue && dataType == base::SnmpStringType) {
        handleString(frame.payload, isNotable);
    } else if (callbackId == base::Validation && dataType == base::SnmpIntResponseType) {
        const base::SnmpIntResponse answer(frame.payload);
        m_receiver.handleAnswer(answer.varbind.storeType(), answer.errorStatus);
    } else if (callbackId == base::Validation && dataType == base::SnmpStringResponseType) {
        const base::SnmpStringResponse answer(frame.payload);
        m_receiver.handleAnswer(answer.varbind.storeType(), answer.errorStatus);
    } else {
        throw QStringLiteral("data type %1 does not go with callback id %2").arg(dataType).arg(callbackId);
    }
}

void ApplicationStream::handleInt(const QByteArray& payload, bool isNotable)
{
    const base::SnmpInt record(payload);
    const ObjectId id = identifierOf(record.oid);
    if (record.value.isNull())
        m_receiver.handleUnset(id);
    else
        m_receiver.handleValue(id, record.value.value(), isNotable);
}

void ApplicationStream::handleString(const QByteArray& payload, bool isNotable)
{
    const base::SnmpString record(payload);
    m_receiver.handleValue(identifierOf(record.oid), record.value, isNotable);
}

} // namespace agent
