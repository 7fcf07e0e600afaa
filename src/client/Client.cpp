// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/Client.h"

#include <QAbstractEventDispatcher>
#include <QDeadlineTimer>
#include <QScopedValueRollback>
#include <QTcpSocket>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <exception>
#include <new>
#include <string>
#include <utility>

#include <vigil/ValueChangedCallback.h>

#include "base/Logging.h"
#include "base/ThreadSafety.h"
#include "base/UntilMemory.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "base/wire/SnmpResponse.h"
#include "base/wire/SnmpString.h"
#include "client/CallbackStore.h"
#include "client/CallbackStoreLock.h"
#include "client/ClientThread.h"
#include "client/GuardedCall.h"
#include "client/ServiceAddress.h"
#include "platform/Platform.h"

using vigil::OidArcs;
using vigil::ValueChangedCallback;

namespace {

std::atomic<bool> isConnectedNow{false}; // for other threads

constexpr int reconnectIntervalMs = 5000;
constexpr int restLimitMs = 2000;
constexpr int restStallMs = 1000;
constexpr std::size_t maxArcDigits = 10;
constexpr int stateConnected = 0;
constexpr int stateDisconnected = 1;
constexpr unsigned int genErr = 5;     // the callback threw
constexpr unsigned int noCallback = 1; // none is registered for the identifier

// Made when the library is loaded, so they outlive its exit handler and the client thread.
const Oid enterprisePrefix = Oid::fromStdString(base::enterpriseOid);
const OidArcs enterpriseArcs = enterprisePrefix.toStdVector();

/// Leaves out the arcs shared with the enterprise's identifier, even if it is not a full prefix.
std::string relativeText(const OidArcs& oid)
{
    auto arc = std::mismatch(oid.begin(), oid.end(), enterpriseArcs.begin(), enterpriseArcs.end()).first;
    const auto arcs = static_cast<std::size_t>(oid.end() - arc);
    std::string text(arcs * (maxArcDigits + 1), '\0');
    char* const begin = text.data();
    char* const limit = begin + text.size();
    char* end = begin;
    for (; arc != oid.end(); ++arc) {
        if (end != begin)
            *end++ = '.';
        end = std::to_chars(end, limit, *arc).ptr;
    }
    text.resize(static_cast<std::size_t>(end - begin));
    return text;
}

Oid fullOid(const std::string& relative)
{
    return enterprisePrefix + Oid::fromStdString(relative);
}

const int& valueOf(const base::SnmpInt& record)
{
    return record.value.valueRef();
}

const std::string& valueOf(const base::SnmpString& record)
{
    return record.value;
}

template <typename Value>
unsigned int verdictOf(ValueChangedCallback* callback, const Oid& oid, const Value& value)
{
    if (!callback)
        return noCallback;
    unsigned int verdict = genErr;
    callGuarded("callbackValidateValue", [&] { verdict = callback->callbackValidateValue(oid, value); });
    return verdict;
}

} // namespace

Client::Client()
    : m_reconnectTimer(new QTimer(this)), m_errorLines(new base::RepeatedLines(&base::writeLog, this))
{}

Client::~Client()
{
    if (!m_socket)
        return;
    m_socket->dispose();
    m_socket = nullptr;
}

// --- Life

void Client::init()
{
    base::writeLog(QStringLiteral("[Client::init] Initializing in thread %1.")
                       .arg(base::toHexString(QThread::currentThread())));
    m_service = serviceAddress();
    m_trust = std::make_unique<ServiceTrust>();
    m_socket = new base::ComConnectionSocket(this);
    m_socket->setPeerCheck([this](const QTcpSocket& socket) { return m_trust->isTrusted(socket); });
    m_socket->setOutOfMemoryHandler([this] { m_isIncomplete = true; });
    createConnections();
    connectLog();
    gatherFrames();
    if (m_service.port == 0)
        return;
    onTimerReconnect();
    m_reconnectTimer->start(reconnectIntervalMs);
}

/// All calls of other threads arrive here. Without memory they are repeated, because the cache must get them.
bool Client::event(QEvent* event)
{
    base::PostingLock::followPosting();
    const bool isQueuedCall = event->type() == QEvent::MetaCall;
    bool isHandled = true;
    bool isRepetition = false;
    base::untilMemory([&] {
        m_isIncomplete = m_isIncomplete || std::exchange(isRepetition, true);
        isHandled = QObject::event(event); // may delete this object, but not in a queued call
    });
    if (isQueuedCall)
        --m_queuedCalls;
    return isHandled;
}

/// For calls from Qt, which no exception may reach. The next turn of the timer starts a new connection; its
/// replay makes up for what is lost here.
template <typename Action>
void Client::guarded(Action action)
{
    try {
        action();
    } catch (const std::bad_alloc&) {
        m_isIncomplete = true;
    }
}

void Client::createConnections()
{
    connect(m_socket, SIGNAL(signal_sigdb_dataReceived(int, QByteArray&, int)), this,
            SLOT(receiveData(int, QByteArray&, int)));
    connect(m_socket, SIGNAL(signal_connected()), this, SLOT(onConnected()));
    connect(m_socket, SIGNAL(signal_disconnected()), this, SLOT(onDisconnected()));
    connect(m_reconnectTimer, SIGNAL(timeout()), this, SLOT(onTimerReconnect()));
}

/// The two debug lines for each frame would soon fill the ring of log files, so they are off by default.
void Client::connectLog()
{
    using Socket = base::ComConnectionSocket;
    connect(m_socket, &Socket::signal_logMessage, m_socket, &base::writeLog);
    connect(m_socket, &Socket::signal_errorMessage, m_errorLines, &base::RepeatedLines::write);
    if (platform::environmentVariable("VIGIL_LOG_DEBUG") == QLatin1String("1"))
        connect(m_socket, &Socket::signal_debugMessage, m_socket, &base::writeLog);
}

/// The frames of all calls that are queued go out together: a system call costs as much as three frames. Only
/// the client thread has an event loop to tell when it is about to rest.
void Client::gatherFrames()
{
    if (!ClientThread::isCurrent())
        return;
    m_socket->setGathering(true);
    connect(thread()->eventDispatcher(), &QAbstractEventDispatcher::aboutToBlock, this, &Client::flush);
}

void Client::flush()
{
    guarded([this] {
        if (m_socket)
            m_socket->flush();
    });
}

void Client::exit()
{
    m_reconnectTimer->stop();
    if (m_socket) {
        sendRest();
        dropPending();
        m_socket->closeConnection();
        m_socket->dispose(); // deleted later: this call may come from the socket's own event processing
    }
    m_socket = nullptr;
    setConnected(false);
    m_errorLines->finish();
    emit finished();
}

// --- Connection

void Client::onTimerReconnect()
{
    // The timer can fire inside a callback that runs an event loop.
    if (!CallbackStoreLock::isHeldByThisThread())
        guarded([this] { reconnect(); });
}

bool Client::isAnyConnected()
{
    return isConnectedNow;
}

void Client::setConnected(bool isConnected)
{
    m_connected = isConnected;
    isConnectedNow = isConnected;
}

void Client::reconnect()
{
    if (m_isIncomplete) {
        m_isIncomplete = false;
        m_socket->closeConnection();
        if (m_connected)
            onDisconnected();
    }
    if (!m_connected)
        m_socket->connectToServer(m_service);
}

void Client::onConnected()
{
    base::writeLog(QStringLiteral("[Client::onConnected] Connected to snmp service."));
    setConnected(true);
    connect(m_socket->socket(), &QTcpSocket::bytesWritten, this, &Client::onBytesWritten);
    {
        const CallbackStoreLock store;
        if (store)
            store->notifyStateInfo(stateConnected);
        resendAll();
    }
    reportDeferredLoss();
}

void Client::onDisconnected()
{
    base::writeLog(QStringLiteral("[Client::onDisconnected] Disconnected from snmp service."));
    setConnected(false);
    dropPending();
    // A write may find that the peer is gone, while this thread holds the lock.
    if (CallbackStoreLock::isHeldByThisThread())
        m_lossIsDeferred = true;
    else
        reportLoss();
}

void Client::reportLoss()
{
    const CallbackStoreLock store;
    if (store)
        store->notifyStateInfo(stateDisconnected);
}

void Client::reportDeferredLoss()
{
    if (!m_lossIsDeferred)
        return;
    m_lossIsDeferred = false;
    reportLoss();
}

// --- Publishing

bool Client::sendValue(const Oid& oid, bool value, bool useTraps)
{
    return publish(oid.toStdVector(), value, useTraps);
}

bool Client::sendValue(const Oid& oid, qint32 value, bool useTraps)
{
    return publish(oid.toStdVector(), value, useTraps);
}

bool Client::sendValue(const Oid& oid, double value, bool useTraps)
{
    return publish(oid.toStdVector(), value, useTraps);
}

bool Client::sendValue(const Oid& oid, const QString& value, bool useTraps)
{
    return publish(oid.toStdVector(), value, useTraps);
}

void Client::unsetOid(const Oid& oid)
{
    publish(oid.toStdVector(), QVariant(), false);
}

/// While anything is pending, nothing may overtake it: a withdrawn tree could take newer values along.
bool Client::publish(const OidArcs& oid, const QVariant& value, bool notify)
{
    if (isGivingUp())
        return false;
    m_valueCache.set(oid, value);
    if (m_pending.isEmpty() && send(oid, value, notify))
        return true;
    if (m_connected) {
        m_pending.add(oid, notify);
        reportCatchingUp();
    }
    return false;
}

/// The service removes the whole tree at the first of these unsets.
void Client::unsetOidTree(const Oid& tree)
{
    const OidArcs arcs = tree.toStdVector();
    int left = m_valueCache.removeTree(tree);
    if (left == 0)
        return;
    while (left > 0 && m_pending.isEmpty() && !isGivingUp() && sendUnset(arcs))
        --left;
    if (left > 0 && m_connected) {
        m_pending.addTree(tree);
        reportCatchingUp();
    }
}

/// At process exit, a long queue or replay is given up.
bool Client::isGivingUp() const
{
    return thread()->isInterruptionRequested();
}

bool Client::sendInt(const OidArcs& oid, int value, bool useTraps)
{
    if (!m_connected)
        return false;
    base::SnmpInt record;
    record.oid = relativeText(oid);
    record.value.setValue(value);
    return m_socket->sendSerializedData(&record, base::SnmpIntType,
                                        useTraps ? base::ValueAndNotify : base::PlainValue);
}

bool Client::sendString(const OidArcs& oid, const QString& value, bool useTraps)
{
    if (!m_connected)
        return false;
    base::SnmpString record;
    record.oid = relativeText(oid);
    record.value = value.toStdString();
    return m_socket->sendSerializedData(&record, base::SnmpStringType,
                                        useTraps ? base::ValueAndNotify : base::PlainValue);
}

/// A record with a null value.
bool Client::sendUnset(const OidArcs& oid)
{
    if (!m_connected)
        return false;
    base::SnmpInt record;
    record.oid = relativeText(oid);
    return m_socket->sendSerializedData(&record, base::SnmpIntType, base::PlainValue);
}

bool Client::send(const OidArcs& oid, const QVariant& value, bool notify)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::UnknownType:
        return sendUnset(oid);
    case QMetaType::Bool:
        return sendInt(oid, value.toBool() ? 1 : 2, notify); // SNMP's TruthValue
    case QMetaType::Int:
        return sendInt(oid, value.toInt(), notify);
    case QMetaType::Double:
        return sendString(oid, QString::number(value.toDouble(), 'g', 6), notify);
    case QMetaType::QString:
        return sendString(oid, value.toString(), notify);
    default:
        base::writeLog(QStringLiteral("Invalid datatype %1.").arg(static_cast<int>(value.type())));
        return true;
    }
}

/// Only what the service does not take at once becomes pending.
void Client::resendAll()
{
    auto entry = m_valueCache.begin();
    if (m_pending.isEmpty()) {
        while (entry != m_valueCache.end() && !isGivingUp() && send(entry->first, entry->second, false))
            ++entry;
    }
    for (; m_connected && entry != m_valueCache.end(); ++entry)
        m_pending.add(entry->first, false);
    reportCatchingUp();
}

// --- Catching up with what the service did not read

/// Until the connection refuses the next one.
void Client::sendPending()
{
    if (m_isSendingPending) // a write may report earlier bytes as written
        return;
    {
        const QScopedValueRollback<bool> sending(m_isSendingPending, true);
        while (!m_pending.isEmpty() && !isGivingUp() && sendFirstPending()) {
        }
    }
    reportCatchingUp();
}

/// False if it is still pending. The identifier of a withdrawn tree need not be in the cache.
bool Client::sendFirstPending()
{
    const auto [oid, wish] = m_pending.first();
    const QVariant value = m_valueCache.value(oid);
    if (wish.withdrawTree && value.isValid() && !sendUnset(oid))
        return false;
    if (!send(oid, value, wish.notify))
        return false;
    m_pending.remove(oid);
    return true;
}

void Client::onBytesWritten()
{
    guarded([this] {
        if (!m_pending.isEmpty() && !m_socket->isCongested())
            sendPending();
    });
}

/// Gives the system what is pending before the connection is closed, unless the service has stopped reading.
void Client::sendRest()
{
    const QDeadlineTimer limit(restLimitMs);
    while (m_connected && m_socket->hasPendingBytes() && !isGivingUp()) {
        const int waitMs = std::min(restStallMs, static_cast<int>(limit.remainingTime()));
        if (!m_socket->waitForBytesWritten(waitMs) || limit.hasExpired())
            return;
        sendPending();
    }
}

void Client::reportCatchingUp()
{
    if (m_isCatchingUp == !m_pending.isEmpty() || !m_connected)
        return;
    m_isCatchingUp = !m_isCatchingUp;
    base::writeLog(m_isCatchingUp
                       ? QStringLiteral("The service does not read fast enough: further values wait.")
                       : QStringLiteral("The service has caught up: all values are sent."));
}

/// The next connection starts with the whole cache, without notifications.
void Client::dropPending()
{
    if (!m_pending.isEmpty())
        base::writeLog(
            QStringLiteral("The connection ended with %1 values waiting, %2 of them with a notification.")
                .arg(m_pending.size())
                .arg(m_pending.notifications()));
    m_pending.clear();
    m_isCatchingUp = false;
}

// --- Receiving

void Client::receiveData(int dataType, QByteArray& data, int callbackId)
{
    flush(); // a callback may take its time
    try {
        dispatch(dataType, data, callbackId);
    } catch (const QString& message) {
        m_errorLines->write(message);
    } catch (const std::exception& error) { // out of memory, for example
        m_errorLines->write(QStringLiteral("___ERROR___ A received record was dropped: %1")
                                .arg(QString::fromLocal8Bit(error.what())));
    }
    reportDeferredLoss();
}

void Client::dispatch(int dataType, const QByteArray& data, int callbackId)
{
    using namespace base;
    if (callbackId == PlainValue && dataType == SnmpIntType)
        notify(SnmpInt(data));
    else if (callbackId == PlainValue && dataType == SnmpStringType)
        notify(SnmpString(data));
    else if (callbackId == Validation && dataType == SnmpIntType)
        validateAndAnswer<SnmpInt, SnmpIntResponse>(SnmpInt(data), SnmpIntResponseType);
    else if (callbackId == Validation && dataType == SnmpStringType)
        validateAndAnswer<SnmpString, SnmpStringResponse>(SnmpString(data), SnmpStringResponseType);
}

template <typename Record>
void Client::notify(const Record& record)
{
    const CallbackStoreLock store;
    if (store)
        store->notifyAll(fullOid(record.oid), valueOf(record));
}

template <typename Record, typename Response>
void Client::validateAndAnswer(const Record& record, int responseType)
{
    const Oid oid = fullOid(record.oid);
    const CallbackStoreLock store;
    ValueChangedCallback* callback = store ? store->findValueChangedCallback(oid) : nullptr;
    Response response;
    response.errorStatus = static_cast<int>(verdictOf(callback, oid, valueOf(record)));
    response.varbind = record;
    // The callback may have taken long enough to lose the peer.
    if (m_connected && !m_socket->sendAnswer(response, responseType, base::Validation) && m_connected)
        m_errorLines->write(QStringLiteral(
            "___ERROR___ An answer to a SET was dropped: the service asks, but does not read."));
}
