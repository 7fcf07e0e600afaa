// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/ComConnectionSocket.h"

#include <QAbstractSocket>
#include <QCoreApplication>
#include <QEventLoop>
#include <QHostAddress>
#include <QMetaMethod>
#include <QScopedValueRollback>
#include <QTcpSocket>

#include <atomic>
#include <memory>
#include <new>

#include "base/DebugOutput.h"
#include "platform/Platform.h"

namespace base {

namespace {

constexpr int pollIntervalMs = 1000;
constexpr int maxFailedWrites = 10;
constexpr int partialWriteWaitMs = 20;
constexpr int yieldIntervalMs = 250;
constexpr int framesPerReport = 10000;
constexpr int usualFrameSize = 256; // most frames then take one allocation

std::atomic<int> sentFrameCount{0}; // of all connections of the process

} // namespace

ComConnectionSocket::ComConnectionSocket(QObject* parent) : QObject(parent), m_pollTimer(new QTimer(this))
{
    connect(m_pollTimer, SIGNAL(timeout()), this, SLOT(slot_readyRead()));
    connect(m_pollTimer, &QTimer::timeout, this, &ComConnectionSocket::askSystem);
    m_lastEventProcessing.start();
}

// --- Connecting and disconnecting

bool ComConnectionSocket::connectToServer(ConnectionSettings settings)
{
    if (settings.host.isEmpty()) {
        logInfo(QStringLiteral("NOT CONNECTED"));
        logError(QStringLiteral("Host is empty"));
        return false;
    }
    m_settings = settings;
    logInfo(QStringLiteral("connectToHost(%1  - port: %2) ... please wait ... ")
                .arg(m_settings.host, QString::number(m_settings.port)));

    platform::fillStandardDescriptors(); // the host may have closed them since the last connection
    auto socket = std::make_unique<QuietSocket>(this);
    socket->connectToHost(m_settings.host, static_cast<quint16>(m_settings.port), QIODevice::ReadWrite,
                          QAbstractSocket::AnyIPProtocol);
    if (!socket->waitForConnected(m_settings.connectTimeoutMs) || isConnectedToItself(*socket)) {
        socket->abort();
        socket.release()->deleteLater();
        reportConnectFailure(m_settings.connectTimeoutMs);
        return false;
    }
    if (!m_peerCheck(*socket)) {
        socket->abort();
        socket.release()->deleteLater();
        logInfo(QStringLiteral("NOT CONNECTED"));
        return false;
    }
    installSocket(socket.release());
    emit signal_connected();
    return true;
}

/// If the service's port is free and in the ephemeral range, the system may choose it as the local port of
/// this very connection. The socket then reaches itself, and the library would take its own values for a
/// manager's.
bool ComConnectionSocket::isConnectedToItself(const QTcpSocket& socket)
{
    return socket.localPort() == socket.peerPort() && socket.localAddress() == socket.peerAddress();
}

void ComConnectionSocket::reportConnectFailure(int timeoutMs)
{
    logInfo(QStringLiteral("NOT CONNECTED"));
    logError(QStringLiteral("connectToHost timed out.\n(Timeout was: %1 ms)\nNOT CONNECTED").arg(timeoutMs));
    writeDebug(connectionCategory, "___WARNING______WARNING______WARNING______WARNING___");
    logError(QStringLiteral("___NOT CONNECTED___"));
}

bool ComConnectionSocket::reconnect()
{
    return m_socket ? false : connectToServer(m_settings);
}

void ComConnectionSocket::installSocket(QuietSocket* socket)
{
    if (m_socket)
        slot_currentConnectionDisconnected();
    resetCountersAndBuffers();
    m_socket = socket;
    platform::closeInForkedChildren(m_socket->socketDescriptor());
    // An answer must not wait for the acknowledgement of the frame before.
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket->setGathering(m_isGathering);
    connect(m_socket, SIGNAL(disconnected()), this, SLOT(slot_currentConnectionDisconnected()));
    connect(m_socket, SIGNAL(readyRead()), this, SLOT(slot_readyRead()));
    logInfo(describePeer(QStringLiteral(">>>>>>  CONNECTED from %1:%2 %3 <<<<<<")));
    m_pollTimer->start(pollIntervalMs);
}

/// No exception may reach Qt.
template <typename Action>
void ComConnectionSocket::guarded(Action action)
{
    try {
        action();
    } catch (const std::bad_alloc&) {
        m_onOutOfMemory();
    }
}

void ComConnectionSocket::slot_currentConnectionDisconnected()
{
    guarded([this] { releaseLostSocket(); });
}

void ComConnectionSocket::releaseLostSocket()
{
    m_pollTimer->stop();
    if (!m_socket)
        return;
    logInfo(describePeer(QStringLiteral(">>>>>  DISCONNECTED from %1:%2 %3 <<<<<")));
    QTcpSocket* lost = m_socket;
    m_socket = nullptr;
    platform::closeInForkedChildren(-1);
    retire(lost);
    emit signal_disconnectInfo(lost->peerAddress().toString(), lost->peerPort(), lost->peerName());
    emit signal_disconnected();
}

void ComConnectionSocket::closeConnection()
{
    m_pollTimer->stop();
    if (m_socket)
        m_socket->disconnectFromHost();
    if (!m_socket)
        return; // released by the disconnection slot
    QTcpSocket* closing = m_socket;
    m_socket = nullptr;
    closing->blockSignals(true);
    closing->abort();
    platform::closeInForkedChildren(-1);
    if (m_isReading)
        retire(closing);
    else
        delete closing;
}

void ComConnectionSocket::dispose()
{
    closeConnection();
    disconnect();
    setParent(nullptr); // the parent may be destroyed first
    if (m_isReading)
        m_isDisposed = true;
    else
        deleteLater();
}

/// Schedules a socket for deletion. While one of its signals is running, even deleteLater() is too early: the
/// event loop inside a burst would carry it out.
void ComConnectionSocket::retire(QTcpSocket* socket)
{
    socket->blockSignals(true);
    if (m_isReading)
        m_retired.append(socket);
    else
        socket->deleteLater();
}

bool ComConnectionSocket::isConnected() const
{
    return m_socket && m_socket->state() == QAbstractSocket::ConnectedState;
}

QString ComConnectionSocket::describePeer(const QString& pattern) const
{
    return pattern.arg(m_socket->peerAddress().toString(), QString::number(m_socket->peerPort()),
                       m_socket->peerName());
}

void ComConnectionSocket::resetCountersAndBuffers()
{
    m_sendMessageCounter = 0;
    m_sendUpdateMessageCounter = 0;
    m_lastReceivedMessageCounter = 0;
    m_receivedUpdateMessageCounter = 0;
    m_storedUpdateMessageCounter = 0;
    m_receivedCallbackId = 0;
    m_received.clear();
}

void ComConnectionSocket::resetAfterNetworkError()
{
    static constexpr const char* banner[] = {
        "_______________________________________________", "_______________________________________________",
        "__________________ERROR________________________", "_______________________________________________",
        "___Network error detected - resetting buffers__", "_______________________________________________"};
    for (const char* line : banner)
        writeDebug(connectionCategory, line);
    logError(QStringLiteral("___Network error detected - resetting buffers___"));
    resetCountersAndBuffers();
    m_lastReceivedMessageCounter = 1; // accept the next frame with any number
}

// --- Sending

void ComConnectionSocket::slot_setSendUpdateMessageCounter(qulonglong counter)
{
    m_sendUpdateMessageCounter = counter;
}

bool ComConnectionSocket::isBacklogged(int limit) const
{
    return isConnected() && m_socket->bytesToWrite() > limit;
}

bool ComConnectionSocket::isCongested() const
{
    return isConnected() && m_socket->bytesToWrite() > m_maxPendingBytes / 2;
}

bool ComConnectionSocket::hasPendingBytes() const
{
    return isConnected() && m_socket->bytesToWrite() > 0;
}

bool ComConnectionSocket::waitForBytesWritten(int timeoutMs)
{
    return isConnected() && m_socket->waitForBytesWritten(timeoutMs);
}

void ComConnectionSocket::setGathering(bool isGathering)
{
    m_isGathering = isGathering;
    if (m_socket)
        m_socket->setGathering(isGathering);
}

void ComConnectionSocket::flush()
{
    if (isConnected())
        m_socket->flush();
}

/// The texts of two debug lines cost more than the frame they are about.
bool ComConnectionSocket::isDebugWanted() const
{
    static const QMetaMethod signal = QMetaMethod::fromSignal(&ComConnectionSocket::signal_debugMessage);
    return isSignalConnected(signal);
}

bool ComConnectionSocket::sendSerializedData(const DbBaseType* record, int type, int clientCallbackId)
{
    return send(record, type, clientCallbackId, m_maxPendingBytes);
}

bool ComConnectionSocket::sendAnswer(const DbBaseType& record, int type, int clientCallbackId)
{
    return send(&record, type, clientCallbackId, 2 * m_maxPendingBytes);
}

bool ComConnectionSocket::send(const DbBaseType* record, int type, int clientCallbackId, int limit)
{
    if (isDebugWanted())
        logDebug(QStringLiteral("Send serialized data to server. Type: %1").arg(type));
    m_lastSendOk = false;
    if (isBacklogged(limit)) {
        m_socket->flush();
        if (isBacklogged(limit))
            return false;
    }
    QByteArray frame;
    frame.reserve(usualFrameSize);
    frame.resize(FrameHeader::size);
    if (record)
        record->serialize(frame);
    sendFrame(frame, type, clientCallbackId);
    return m_lastSendOk;
}

void ComConnectionSocket::slot_sendSerializedData(QByteArray answer, int type, int clientCallbackId)
{
    answer.prepend(FrameHeader::size, '\0');
    sendFrame(answer, type, clientCallbackId);
}

/// frame has room for the header.
void ComConnectionSocket::sendFrame(QByteArray frame, int type, int clientCallbackId)
{
    m_lastSendOk = false;
    if (!m_socket && !reconnect()) {
        logError(QStringLiteral("slot_sendSerializedData::cannot reconnect"));
        return;
    }
    writeHeader(frame, type, clientCallbackId);
    if (!isConnected())
        return;
    m_lastSendOk = writeFrame(frame);
    if (m_lastSendOk)
        countSentFrame();
    if (!isConnected())
        m_lastSendOk = false;
    else if (!m_isGathering)
        m_socket->flush();
}

void ComConnectionSocket::writeHeader(QByteArray& frame, int type, int clientCallbackId)
{
    ++m_sendMessageCounter;
    if (isDebugWanted())
        logDebug(QStringLiteral("CCS:SEND MSG # %1 --->").arg(m_sendMessageCounter));
    FrameHeader header;
    header.dataType = static_cast<qint16>(type);
    header.clientCallbackId = clientCallbackId;
    header.messageCounter = m_sendMessageCounter;
    header.updateMessageCounter = m_sendUpdateMessageCounter;
    header.write(frame.data(), frame.size() - FrameHeader::size);
}

bool ComConnectionSocket::writeFrame(const QByteArray& frame)
{
    int failures = 0;
    int position = 0;
    while (failures < maxFailedWrites && position < frame.size() && isConnected()) {
        const qint64 written = m_socket->write(frame.constData() + position, frame.size() - position);
        if (written < 1) {
            ++failures;
            continue;
        }
        position += static_cast<int>(written);
        if (position < frame.size() && isConnected())
            m_socket->waitForBytesWritten(partialWriteWaitMs);
    }
    return position == frame.size();
}

void ComConnectionSocket::countSentFrame()
{
    const int count = ++sentFrameCount;
    if (count % framesPerReport == 0)
        writeDebug(
            connectionCategory,
            qPrintable(QStringLiteral("Overall data sent ( x10000 ) %1").arg(count / framesPerReport)));
}

// --- Receiving

void ComConnectionSocket::slot_readyRead()
{
    if (!m_socket)
        return;
    guarded([this] {
        m_pollTimer->start(pollIntervalMs);
        if (!m_inEventProcessing)
            slot_readDataFromSocket();
    });
}

/// Finds data and losses that the system has not reported. Some systems report nothing that happened before
/// the event loop first watched the socket.
void ComConnectionSocket::askSystem()
{
    guarded([this] {
        if (isConnected() && !m_inEventProcessing && !m_isReading)
            m_socket->waitForReadyRead(0);
    });
}

void ComConnectionSocket::slot_readDataFromSocket()
{
    if (m_inEventProcessing || m_isReading || !isConnected() || m_socket->bytesAvailable() < 1)
        return;
    m_received.append(m_socket->readAll());

    {
        const QScopedValueRollback<bool> reading(m_isReading, true);
        slot_computeReceivedData();
    }

    for (QTcpSocket* socket : qAsConst(m_retired))
        socket->deleteLater();
    m_retired.clear();
    if (m_isDisposed)
        deleteLater();
}

void ComConnectionSocket::slot_computeReceivedData()
{
    if (m_inEventProcessing)
        return;
    FrameCutter::Status status = m_received.look();
    if (status == FrameCutter::Status::Incomplete)
        return;
    while (status == FrameCutter::Status::Complete) {
        processFrame(m_received.take());
        status = m_received.look(); // nothing is left if a receiver of the frame has reconnected
    }
    if (status != FrameCutter::Status::Incomplete) {
        resetAfterNetworkError();
        return;
    }
    m_received.discardTaken();
    yieldToEventLoop();
}

void ComConnectionSocket::processFrame(Frame frame)
{
    const quint64 previousCounter = m_lastReceivedMessageCounter;
    m_receivedCallbackId = static_cast<int>(frame.header.clientCallbackId);
    m_lastReceivedMessageCounter = frame.header.messageCounter;
    m_receivedUpdateMessageCounter = frame.header.updateMessageCounter;

    const bool isValid = isExpectedCounter(previousCounter);
    checkUpdateCounter();
    if (!isValid) {
        logError(QStringLiteral("Received invalid message counter. Ignoring received data."));
        return;
    }
    logDebug(QStringLiteral("CCS: Raw data received.Type: %1  - Length: %2")
                 .arg(frame.header.dataType)
                 .arg(frame.payload.size()));
    emit signal_sigdb_dataReceived(frame.header.dataType, frame.payload, m_receivedCallbackId);
}

/// Checks the number of the frame just taken. The counter stays 0 until the peer sends number 1, and frames
/// before it are dropped.
bool ComConnectionSocket::isExpectedCounter(quint64 previous)
{
    const quint64 received = m_lastReceivedMessageCounter;
    logDebug(QStringLiteral("CCS:REC. MSG # %1 <---").arg(received));
    const bool isNext = static_cast<quint32>(previous + 1) == static_cast<quint32>(received);
    if (!isNext && previous != 1 && received != 1) {
        logError(
            QStringLiteral("Unexpected received message counter: %1. Last received message counter was %2.")
                .arg(received)
                .arg(previous));
    }
    if (received >= 2 && previous == 0)
        m_lastReceivedMessageCounter = 0;
    return m_lastReceivedMessageCounter != 0;
}

void ComConnectionSocket::checkUpdateCounter()
{
    const quint64 stored = m_storedUpdateMessageCounter;
    const quint64 received = m_receivedUpdateMessageCounter;
    if (stored != 0 && stored + 1 < received) {
        logError(
            QStringLiteral("COMMUNICATION__ERROR::We lost %1 update messages").arg(received - stored - 1));
        logError(QStringLiteral("Stored update message counter: %1\n  Received update message counter: %2\n")
                     .arg(stored)
                     .arg(received));
    }
    m_storedUpdateMessageCounter = received;
}

void ComConnectionSocket::yieldToEventLoop()
{
    if (m_inEventProcessing || m_lastEventProcessing.elapsed() < yieldIntervalMs)
        return;
    const QScopedValueRollback<bool> processing(m_inEventProcessing, true);
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    m_lastEventProcessing.restart();
}

// --- Log

void ComConnectionSocket::logDebug(const QString& text)
{
    emit signal_debugMessage(QStringLiteral("CCS::DEBUG: ") + text);
}

void ComConnectionSocket::logInfo(const QString& text)
{
    emit signal_logMessage(QStringLiteral("CCS::LOG: ") + text);
}

void ComConnectionSocket::logError(const QString& text)
{
    emit signal_errorMessage(QStringLiteral("___ERROR___ CCS::LOG: ") + text);
}

} // namespace base
