#include "ApplicationConnection.h"

#include <QHostAddress>

#include "Log.h"
#include "RecordCheck.h"
#include "base/DataType.h"
#include "base/SnmpInt.h"
#include "base/SnmpResponse.h"
#include "base/SnmpString.h"

namespace agent {

namespace {

// One burst of an application that floods the agent; the others have their turn after it.
constexpr qint64 maxBurst = 1'048'576;

constexpr qint64 maxUnread = 10'000'000;

/// A record that names no object. Thrown as the decoder throws what it cannot read.
ObjectId identifierOf(const std::string& text)
{
    const std::optional<ObjectId> id = fromRelativeText(text);
    if (!id)
        throw QStringLiteral("an identifier is not numeric: %1").arg(QString::fromStdString(text));
    return *id;
}

} // namespace

ApplicationConnection::ApplicationConnection(QTcpSocket* socket, OwnerId owner, const Clock& clock,
                                             QObject* parent)
    : QObject(parent),
      m_socket(socket),
      m_clock(clock),
      m_peer(QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort()))
{
    m_info.number = owner;
    m_info.address = socket->peerAddress();
    m_info.port = socket->peerPort();
    m_info.since = clock.nowUtc();
    m_socket->setParent(this);
    m_socket->setReadBufferSize(maxBurst);
    connect(m_socket, &QTcpSocket::readyRead, this, &ApplicationConnection::readFrames);
    connect(m_socket, &QTcpSocket::disconnected, this, &ApplicationConnection::handleDisconnected);
}

QString ApplicationConnection::name() const
{
    return QStringLiteral("application %1 (%2)").arg(m_info.number).arg(m_peer);
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
    m_frames.append(m_socket->readAll());
    FrameAssembler::Frame frame;
    FrameAssembler::Result result = m_frames.next(frame);
    while (result == FrameAssembler::Result::Complete) {
        ++m_info.frames;
        m_info.lastFrame = m_clock.nowUtc();
        const QString problem = recordProblem(frame);
        if (!problem.isEmpty()) {
            countRefusal();
            return closeBecause(problem);
        }
        result = m_frames.next(frame);
    }
    m_frames.discardTaken();
    if (result == FrameAssembler::Result::Malformed)
        closeBecause(m_frames.problem());
}

QString ApplicationConnection::recordProblem(const FrameAssembler::Frame& frame)
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

void ApplicationConnection::handleRecord(const FrameAssembler::Frame& frame)
{
    const qint64 callbackId = frame.header.clientCallbackId;
    const int dataType = frame.header.dataType;
    const bool isNotable = callbackId == base::ValueWithTrap;
    const bool isValue = callbackId == base::PlainValue || isNotable;
    if (isValue && dataType == base::SnmpIntType) {
        handleInt(frame.payload, isNotable);
    } else if (isValue && dataType == base::SnmpStringType) {
        handleString(frame.payload, isNotable);
    } else if (callbackId == base::Validation && dataType == base::SnmpIntResponseType) {
        const base::SnmpIntResponse answer(frame.payload);
        emit answerReceived(answer.varbind.storeType(), answer.errorStatus);
    } else if (callbackId == base::Validation && dataType == base::SnmpStringResponseType) {
        const base::SnmpStringResponse answer(frame.payload);
        emit answerReceived(answer.varbind.storeType(), answer.errorStatus);
    } else {
        throw QStringLiteral("data type %1 does not go with callback id %2").arg(dataType).arg(callbackId);
    }
}

void ApplicationConnection::handleInt(const QByteArray& payload, bool isNotable)
{
    const base::SnmpInt record(payload);
    const ObjectId id = identifierOf(record.oid);
    if (record.value.isNull())
        emit unsetReceived(id);
    else
        emit valueReceived(id, record.value.value(), isNotable);
}

void ApplicationConnection::handleString(const QByteArray& payload, bool isNotable)
{
    const base::SnmpString record(payload);
    emit valueReceived(identifierOf(record.oid), record.value, isNotable);
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
        const QString problem = QStringLiteral("it does not read what it is sent");
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
    log::warning(QStringLiteral("%1 is disconnected: %2").arg(name(), problem));
    m_isClosing = true;
    m_socket->abort();
}

void ApplicationConnection::handleDisconnected()
{
    m_socket->disconnect(this);
    m_isClosing = true;
    emit lost();
}

} // namespace agent
