// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationStream.h"

#include <utility>

#include "base/wire/Protocol.h"
#include "base/wire/RecordCheck.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"

namespace agent {

namespace {

// Far beyond the reach of SNMP. Reading millions of arcs would stall the agent.
constexpr size_t maxIdentifierBytes = 65'536;

constexpr int maxQuoted = 100;

Error readIdentifier(const std::string& text, ObjectId& id)
{
    if (text.size() > maxIdentifierBytes)
        return Error(QStringLiteral("an identifier is %1 bytes long").arg(text.size()));
    std::optional<ObjectId> full = fromRelativeText(text);
    if (!full)
        return Error(QStringLiteral("an identifier is not numeric: %1")
                         .arg(QString::fromStdString(text).left(maxQuoted)));
    id = std::move(*full);
    return Error();
}

} // namespace

Error ApplicationStream::receive(const QByteArray& bytes)
{
    m_frames.append(bytes);
    base::Frame frame;
    FrameSequence::Result result = m_frames.next(frame);
    while (result == FrameSequence::Result::Complete) {
        if (Error error = handleFrame(frame))
            return error;
        result = m_frames.next(frame);
    }
    m_frames.discardTaken();
    return m_frames.error();
}

Error ApplicationStream::handleFrame(const base::Frame& frame)
{
    if (const auto problem = base::recordProblem(frame.header.dataType, frame.payload))
        return Error(*problem);
    try {
        return handleRecord(frame);
    } catch (const QString& message) { // from a record's decoder
        return Error(message);
    }
}

template <typename Response>
Error ApplicationStream::handleAnswer(const Response& answer)
{
    m_receiver.handleAnswer(answer.varbind.storeType(), answer.errorStatus);
    return Error();
}

Error ApplicationStream::handleRecord(const base::Frame& frame)
{
    const qint64 callbackId = frame.header.clientCallbackId;
    const int dataType = frame.header.dataType;
    const bool notify = callbackId == base::ValueAndNotify;
    const bool isValue = callbackId == base::PlainValue || notify;
    const bool isAnswer = callbackId == base::Validation;
    if (isValue && dataType == base::SnmpIntType)
        return handleInt(frame.payload, notify);
    if (isValue && dataType == base::SnmpStringType)
        return handleString(frame.payload, notify);
    if (isAnswer && dataType == base::SnmpIntResponseType)
        return handleAnswer(base::SnmpIntResponse(frame.payload));
    if (isAnswer && dataType == base::SnmpStringResponseType)
        return handleAnswer(base::SnmpStringResponse(frame.payload));
    return Error(
        QStringLiteral("data type %1 does not go with callback id %2").arg(dataType).arg(callbackId));
}

Error ApplicationStream::handleInt(const QByteArray& payload, bool notify)
{
    const base::SnmpInt record(payload);
    ObjectId id;
    if (Error error = readIdentifier(record.oid, id))
        return error;
    if (record.value.isNull())
        m_receiver.handleUnset(id);
    else
        m_receiver.handleValue(id, record.value.value(), notify);
    return Error();
}

Error ApplicationStream::handleString(const QByteArray& payload, bool notify)
{
    const base::SnmpString record(payload);
    ObjectId id;
    if (Error error = readIdentifier(record.oid, id))
        return error;
    m_receiver.handleValue(id, record.value, notify);
    return Error();
}

} // namespace agent
