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

#include <vigil/Oid.h>

#include "base/ComConnectionSocket.h"
#include "base/ConnectionSettings.h"
#include "client/ValueCache.h"

using vigil::Oid; // the slots' signatures have no namespace

/// The one object that talks to the local SNMP service.
///
/// Purpose: sends published values as records and keeps them in a ValueCache. Retries every 5 seconds while
/// there is no connection, and sends the whole cache after a reconnect. Turns records from the service into
/// calls of the registered callbacks.
///
///     state         | event            | action, next state
///     --------------|------------------|--------------------------------------------------------
///     created       | init()           | connects, starts the timer; disconnected
///     disconnected  | timer            | connects
///                   | onConnected()    | tells the state callbacks, sends the cache; connected
///                   | a value          | into the cache
///     connected     | onDisconnected() | tells the state callbacks; disconnected
///                   | a value          | into the cache and sent
///                   | a record         | calls the callbacks, answers a validation
///     both          | exit()           | closes the connection, emits finished(); stopped
///
/// Threads: runs in the client thread; other threads use ClientQueue. The facade's store lock is held during
/// callbacks.
///
/// Ownership: owns its socket. Deletes itself in its thread after exit().
///
/// Failure: a value that cannot be sent stays in the cache. A malformed record is logged and dropped; the
/// connection stays up.
class Client : public QObject
{
    Q_OBJECT

public:
    Client();
    ~Client() override;

    bool event(QEvent* event) override;

signals:
    void finished();

public slots:
    /// Connects for the first time and starts the retry timer.
    void init();

    /// Closes the connection and emits finished().
    void exit();

    /// Publish a value. False if it was not sent, only cached. useTraps asks for a notification.
    bool sendValue(Oid oid, bool value, bool useTraps);
    bool sendValue(Oid oid, qint32 value, bool useTraps);
    bool sendValue(Oid oid, double value, bool useTraps);
    bool sendValue(Oid oid, QString value, bool useTraps);

    /// Sends the whole cache, without notifications.
    void resendAll();

    void unsetOid(Oid oid);
    void unsetOidTree(Oid oid);

    void createConnections();
    void onConnected();
    void onDisconnected();
    void onTimerReconnect();

private slots:
    void receiveData(int dataType, QByteArray& data, int callbackId);

protected:
    /// Sends one entry of the cache.
    void resend(const Oid& oid, const QVariant& value);

private:
    bool isGivingUp() const;
    void sendUnset(const Oid& oid);
    bool sendInt(const Oid& oid, int value, bool useTraps);
    bool sendString(const Oid& oid, const QString& value, bool useTraps);
    void connectLog();

    void dispatch(int dataType, const QByteArray& data, int callbackId);
    template <typename Record>
    void notify(const Record& record);
    template <typename Record, typename Response>
    void validateAndAnswer(const Record& record, int responseType);

    void reportLoss();
    void reportDeferredLoss();

    base::ComConnectionSocket* m_socket = nullptr;
    bool m_connected = false;
    bool m_lossIsDeferred = false;
    QTimer* m_reconnectTimer;
    base::ConnectionSettings m_service;
    ValueCache m_valueCache;
};

#endif
