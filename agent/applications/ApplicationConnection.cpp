// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/ApplicationConnection.h"

#include <QHostAddress>

#include <utility>

#include "agent/core/Log.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpString.h"

namespace agent {

namespace {

// After this number of bytes from one application the others have their turn.
constexpr qint64 maxBurst = 1'048'576;

constexpr qint64 maxUnread = 10'000'000;

} // namespace

ApplicationConnection::ApplicationConnection(QTcpSocket* socket, ApplicationId application,
                                             const Identity& identity, Clock& clock, const Limits& limits,
                                             QObject* parent)
    : QObject(parent), m_socket(socket), m_stream(*this, limits.frameBytes), m_clock(clock)
{
    m_info.identity = identity;
    m_info.number = application;
    m_info.address = socket->peerAddress();
    m_info.port = socket->peerPort();
    m_info.since = clock.nowUtc();
    m_socket->setParent(this);
    m_socket->setReadBufferSize(maxBurst);
    m_clock.callAfter(Limits::frameMs, this, [this] {
        if (isSilent())
            closeSilent();
    });
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1); // a manager waits for each frame
    connect(m_socket, &QTcpSocket::readyRead, this, &ApplicationConnection::readFrames);
    connect(m_socket, &QTcpSocket::disconnected, this, &ApplicationConnection::handleDisconnected);
}

void ApplicationConnection::ask(int number, const ObjectId& id, const CellValue& value)
{
    sendBinding(base::Validation, number, id, value);
}

void ApplicationConnection::commit(const ObjectId& id, const CellValue& value)
{
    sendBinding(base::PlainValue, 0, id, value);
}

void ApplicationConnection::readFrames()
{
    if (m_isClosing)
        return;
    const quint64 framesBefore = m_stream.frames();
    const Error error = m_stream.receive(m_socket->readAll());
    m_info.frames = m_stream.frames();
    if (m_info.frames > framesBefore)
        m_info.lastFrame = m_clock.nowUtc();
    if (error) {
        m_isMalformed = true;
        countRefusal();
        return closeBecause(error.text());
    }
    watchFrame();
    setMemory(m_stream.memory());
}

void ApplicationConnection::setMemory(size_t memory)
{
    const size_t before = std::exchange(m_memory, memory);
    if (before != memory)
        emit memoryChanged(before, memory);
}

void ApplicationConnection::closeLarge()
{
    closeBecause(QStringLiteral("its unfinished frame takes more memory than --max-memory allows its user"));
}

/// An incomplete frame must not hold its memory for long, however slowly the rest arrives.
void ApplicationConnection::watchFrame()
{
    if (m_isWatched || !m_stream.isInsideFrame())
        return;
    m_isWatched = true;
    m_clock.callAfter(Limits::frameMs, this, [this, frames = m_stream.frames()] {
        m_isWatched = false;
        if (m_isClosing)
            return;
        if (m_stream.frames() > frames)
            return watchFrame();
        if (m_stream.isInsideFrame())
            closeUnfinished();
    });
}

void ApplicationConnection::handleValue(const ObjectId& id, const CellValue& value, bool notify)
{
    emit valueReceived(id, value, notify);
}

void ApplicationConnection::handleUnset(const ObjectId& tree)
{
    emit unsetReceived(tree);
}

void ApplicationConnection::handleAnswer(int number, int errorStatus)
{
    emit answerReceived(number, errorStatus);
}

void ApplicationConnection::sendBinding(int callbackId, int storeType, const ObjectId& id,
                                        const CellValue& value)
{
    if (const int* number = std::get_if<int>(&value)) {
        base::SnmpInt record;
        record.setStoreType(storeType);
        record.oid = toRelativeText(id);
        record.value.setValue(*number);
        sendRecord(base::SnmpIntType, callbackId, record);
    } else {
        base::SnmpString record;
        record.setStoreType(storeType);
        record.oid = toRelativeText(id);
        record.value = std::get<std::string>(value);
        sendRecord(base::SnmpStringType, callbackId, record);
    }
}

void ApplicationConnection::sendRecord(int dataType, int callbackId, const base::DbBaseType& record)
{
    if (m_isClosing)
        return;
    if (m_socket->bytesToWrite() > maxUnread) {
        m_isClosing = true;
        const QString problem = QStringLiteral("it does not read from its connection");
        QMetaObject::invokeMethod(
            this, [this, problem] { closeBecause(problem); }, Qt::QueuedConnection);
        return;
    }
    QByteArray payload;
    record.serialize(payload);
    base::FrameHeader header;
    header.dataType = static_cast<qint16>(dataType);
    header.clientCallbackId = callbackId;
    header.messageCounter = ++m_sentFrames;
    m_socket->write(header.toBytes(payload.size()) + payload);
}

void ApplicationConnection::closeBecause(const QString& problem)
{
    log::warning(m_info.identity.user, QStringLiteral("%1 is disconnected: %2").arg(name(), problem));
    m_isClosing = true;
    m_socket->abort();
}

void ApplicationConnection::closeUnfinished()
{
    closeBecause(
        QStringLiteral("it has not completed a frame within %1 seconds").arg(Limits::frameMs / 1000));
}

void ApplicationConnection::closeSilent()
{
    if (m_isClosing)
        return;
    if (m_stream.isInsideFrame())
        return closeUnfinished();
    log::detail(m_info.identity.user,
                [this] { return QStringLiteral("%1 is disconnected: it has sent nothing").arg(name()); });
    m_isClosing = true;
    m_socket->abort();
}

void ApplicationConnection::handleDisconnected()
{
    m_socket->disconnect(this);
    m_isClosing = true;
    setMemory(0);
    emit lost();
}

} // namespace agent
