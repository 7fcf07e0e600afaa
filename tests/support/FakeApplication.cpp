// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "FakeApplication.h"

#include <QHostAddress>

#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"
#include "support/RunUntil.h"

namespace support {

namespace {

template <typename Record>
QByteArray payloadOf(const Record& record)
{
    QByteArray payload;
    record.serialize(payload);
    return payload;
}

QByteArray payloadOf(const std::string& oid, int value)
{
    base::SnmpInt record;
    record.oid = oid;
    record.value.setValue(value);
    return payloadOf(record);
}

QByteArray payloadOf(const std::string& oid, const std::string& value)
{
    base::SnmpString record;
    record.oid = oid;
    record.value = value;
    return payloadOf(record);
}

} // namespace

FakeApplication::FakeApplication(quint16 port)
{
    connect(&m_socket, &QTcpSocket::readyRead, this, &FakeApplication::readFrames);
    m_socket.connectToHost(QHostAddress::LocalHost, port);
    m_socket.waitForConnected(deadlineMs);
}

FakeApplication::~FakeApplication()
{
    m_socket.flush();
}

bool FakeApplication::waitForDisconnect()
{
    return runUntil([this] { return m_socket.state() == QAbstractSocket::UnconnectedState; });
}

void FakeApplication::stopReading()
{
    disconnect(&m_socket, &QTcpSocket::readyRead, this, &FakeApplication::readFrames);
    m_socket.setReadBufferSize(1);
}

void FakeApplication::publish(const std::string& oid, int value)
{
    sendFrame(base::SnmpIntType, base::PlainValue, payloadOf(oid, value));
}

void FakeApplication::publish(const std::string& oid, const std::string& value)
{
    sendFrame(base::SnmpStringType, base::PlainValue, payloadOf(oid, value));
}

void FakeApplication::publishAndNotify(const std::string& oid, int value)
{
    sendFrame(base::SnmpIntType, base::ValueAndNotify, payloadOf(oid, value));
}

void FakeApplication::publishAndNotify(const std::string& oid, const std::string& value)
{
    sendFrame(base::SnmpStringType, base::ValueAndNotify, payloadOf(oid, value));
}

void FakeApplication::unset(const std::string& oid)
{
    base::SnmpInt record;
    record.oid = oid;
    sendFrame(base::SnmpIntType, base::PlainValue, payloadOf(record));
}

void FakeApplication::answer(const Request& question, int errorStatus)
{
    QByteArray payload;
    if (question.dataType == base::SnmpIntType) {
        base::SnmpIntResponse response;
        response.varbind.setStoreType(question.storeType);
        response.varbind.oid = question.oid;
        response.varbind.value.setValue(std::stoi(question.value));
        response.errorStatus = errorStatus;
        response.serialize(payload);
        sendFrame(base::SnmpIntResponseType, base::Validation, payload);
    } else {
        base::SnmpStringResponse response;
        response.varbind.setStoreType(question.storeType);
        response.varbind.oid = question.oid;
        response.varbind.value = question.value;
        response.errorStatus = errorStatus;
        response.serialize(payload);
        sendFrame(base::SnmpStringResponseType, base::Validation, payload);
    }
}

void FakeApplication::sendFrame(int dataType, int callbackId, const QByteArray& payload)
{
    base::FrameHeader header;
    header.dataType = static_cast<qint16>(dataType);
    header.clientCallbackId = callbackId;
    header.messageCounter = ++m_sentFrames;
    m_socket.write(header.toBytes(payload.size()) + payload);
}

void FakeApplication::sendBytes(const QByteArray& bytes)
{
    m_socket.write(bytes);
    m_socket.flush();
}

void FakeApplication::readFrames()
{
    m_frames.append(m_socket.readAll());
    while (m_frames.look() == base::FrameCutter::Status::Complete)
        handle(m_frames.take());
    m_frames.discardTaken();
}

void FakeApplication::handle(const base::Frame& frame)
{
    Request request;
    request.callbackId = static_cast<int>(frame.header.clientCallbackId);
    request.dataType = frame.header.dataType;
    if (request.dataType == base::SnmpIntType) {
        const base::SnmpInt record(frame.payload);
        request.storeType = record.storeType();
        request.oid = record.oid;
        request.value = std::to_string(record.value.value());
    } else {
        const base::SnmpString record(frame.payload);
        request.storeType = record.storeType();
        request.oid = record.oid;
        request.value = record.value;
    }
    if (request.callbackId == base::Validation) {
        m_questions.push_back(request);
        onQuestion(request);
    } else {
        m_commits.push_back(request);
        onCommit(request);
    }
}

} // namespace support
