// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CLIENT_H
#define VIGIL_CLIENT_CLIENT_H

#include <QByteArray>
#include <QEvent>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariant>

#include <atomic>
#include <memory>

#include <vigil/Oid.h>

#include "base/ComConnectionSocket.h"
#include "base/ConnectionSettings.h"
#include "base/RepeatedLines.h"
#include "client/PendingSends.h"
#include "client/ServiceTrust.h"
#include "client/ValueCache.h"

using vigil::Oid; // the slots' signatures have no namespace

/// The one object that talks to the local SNMP service.
///
/// Purpose: sends published values as records and keeps them in a ValueCache. Retries every 5 seconds while
/// there is no connection, and sends the whole cache after a reconnect. A service that ServiceTrust refuses
/// gets nothing; it is one more failed connect. Turns records from the service into calls of the registered
/// callbacks.
///
///     state         | event            | action, next state
///     --------------|------------------|--------------------------------------------------------
///     created       | init()           | connects, starts the timer; disconnected
///     disconnected  | timer            | connects
///                   | onConnected()    | tells the state callbacks, sends the cache; connected
///                   | a value          | into the cache
///     connected     | onDisconnected() | tells the state callbacks; disconnected
///                   | a value          | into the cache and sent; refused: catching up
///     catching up   | onDisconnected() | forgets what is pending, tells the state callbacks; disconnected
///                   | a value          | into the cache and pending
///                   | bytes written    | sends what is pending, in the order of the identifiers; connected
///     the last two  | a record         | calls the callbacks, answers a validation
///     any           | exit()           | sends the rest, closes the connection, emits finished(); stopped
///
/// Threads: runs in the client thread; other threads use ClientQueue. The facade's store lock is held during
/// callbacks.
///
/// Ownership: owns its socket. Deletes itself in its thread after exit().
///
/// Failure: a value that cannot be sent stays in the cache. If the service does not read, sends are refused
/// and become pending: only the last state of each identifier is sent, with a notification if any of its
/// values wanted one. A malformed record is logged and dropped; the connection stays up.
class Client : public QObject
{
    Q_OBJECT

public:
    Client();
    ~Client() override;

    /// True while the process's client is connected. Any thread.
    static bool isAnyConnected();

    /// Counts a call that is about to be queued; event() takes it off once it has run. Any thread.
    void announceCall() { ++m_queuedCalls; }

    /// For a call that could not be queued after all.
    void revokeCall() { --m_queuedCalls; }

    /// True while a queued call waits or runs. Any thread.
    bool hasQueuedCalls() const { return m_queuedCalls > 0; }

    bool event(QEvent* event) override;

    /// Publishes a value or, if it is invalid, withdraws it. False if it was not sent yet, only cached.
    bool publish(const vigil::OidArcs& oid, const QVariant& value, bool notify);

    /// Hands the frames of a burst over to the system. Call it before anything that may block the thread.
    void flush();

signals:
    void finished();

public slots:
    /// Connects for the first time and starts the retry timer.
    void init();

    /// Sends what is pending, as long as the service reads, but at most 2 seconds. Closes the connection and
    /// emits finished().
    void exit();

    // A reference reads the copy inside the queued call. The slots' signatures are those of plain values, for
    // which Qt would copy the list of the arcs once more.

    /// Publish a value. False if it was not sent yet, only cached. useTraps asks for a notification.
    bool sendValue(const Oid& oid, bool value, bool useTraps);
    bool sendValue(const Oid& oid, qint32 value, bool useTraps);
    bool sendValue(const Oid& oid, double value, bool useTraps);
    bool sendValue(const Oid& oid, const QString& value, bool useTraps);

    /// Sends the whole cache, without notifications.
    void resendAll();

    void unsetOid(const Oid& oid);
    void unsetOidTree(const Oid& oid);

    void createConnections();
    void onConnected();
    void onDisconnected();
    void onTimerReconnect();

private slots:
    void receiveData(int dataType, QByteArray& data, int callbackId);

protected:
    /// Sends the state of one identifier. False if it is still to be sent.
    bool send(const vigil::OidArcs& oid, const QVariant& value, bool notify);

private:
    template <typename Action>
    void guarded(Action action);
    void setConnected(bool isConnected);
    void reconnect();
    void gatherFrames();
    bool isGivingUp() const;
    void sendPending();
    bool sendFirstPending();
    void sendRest();
    void onBytesWritten();
    void reportCatchingUp();
    void dropPending();
    bool sendUnset(const vigil::OidArcs& oid);
    bool sendInt(const vigil::OidArcs& oid, int value, bool useTraps);
    bool sendString(const vigil::OidArcs& oid, const QString& value, bool useTraps);
    void connectLog();

    void dispatch(int dataType, const QByteArray& data, int callbackId);
    template <typename Record>
    void notify(const Record& record);
    template <typename Record, typename Response>
    void validateAndAnswer(const Record& record, int responseType);

    void reportLoss();
    void reportDeferredLoss();

    base::ComConnectionSocket* m_socket = nullptr;
    std::atomic<int> m_queuedCalls{0};
    bool m_connected = false;
    bool m_lossIsDeferred = false;
    bool m_isIncomplete = false; // memory ran out. Above the timer: a new child already calls event()
    QTimer* m_reconnectTimer;
    base::RepeatedLines* m_errorLines;
    base::ConnectionSettings m_service;
    std::unique_ptr<ServiceTrust> m_trust;
    ValueCache m_valueCache;
    PendingSends m_pending;
    bool m_isSendingPending = false;
    bool m_isCatchingUp = false;
};

#endif
