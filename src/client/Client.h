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

#include <map>

#include <vigil/Oid.h>

#include "base/ComConnectionSocket.h"
#include "base/ConnectionSettings.h"
#include "types/OidOperators.h"

using vigil::Oid; // the slots' signatures name it without its namespace

/// The one object that talks to the local SNMP service.
///
/// Purpose: sends published values as records, keeps all of them in a cache and sends the cache again on
/// every new connection, tries to connect every 5 seconds while there is none, and turns records from the
/// service into calls of the registered callbacks.
///
/// Threads: everything runs in the client thread; other threads reach the slots through its event loop.
/// Callbacks are called with the facade's store lock held.
///
/// Ownership: owns its socket. Deletes itself in its thread after exit().
///
/// Failure: a value that cannot be sent waits in the cache. A received record that makes no sense is logged
/// and dropped; the connection lives on.
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
    /// Makes the first attempt to connect and starts the timer.
    void init();

    /// Closes the connection and emits finished().
    void exit();

    /// Publish a value. False when it only went into the cache. useTraps asks for a notification.
    bool sendValue(Oid oid, bool value, bool useTraps);
    bool sendValue(Oid oid, qint32 value, bool useTraps);
    bool sendValue(Oid oid, double value, bool useTraps);
    bool sendValue(Oid oid, QString value, bool useTraps);

    /// Sends the whole cache, in the order of the identifiers.
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
    bool m_connected = false; // alone decides whether a value is sent now or only cached
    bool m_lossIsDeferred = false;
    QTimer* m_reconnectTimer;
    base::ConnectionSettings m_service;
    std::map<Oid, QVariant> m_valueCache; // an invalid QVariant means that the identifier is unset
};

#endif
