// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_COMCONNECTIONSOCKET_H
#define VIGIL_BASE_COMCONNECTIONSOCKET_H

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include "base/ConnectionSettings.h"
#include "base/wire/DbBaseType.h"
#include "base/wire/FrameCutter.h"

QT_BEGIN_NAMESPACE
class QTcpSocket;
QT_END_NAMESPACE

namespace base {

/// The TCP connection to the local SNMP service ("CCS" in its log texts).
///
/// Purpose: sends records as numbered frames and reassembles received ones (see FrameHeader for their
/// layout). A received frame must carry the number after that of the frame before; numbering begins with 1 on
/// each new connection, and frames that come before a frame 1 are dropped. After bytes that are no frame
/// everything received is thrown away and any number is accepted once.
///
/// Threads: lives in one thread and is used there only. connectToServer() blocks it up to the time-out,
/// sending up to 20 ms for each partial write. During a burst of received frames it lets the thread's other
/// events run.
///
/// Ownership: owns its QTcpSocket. May be closed from a slot of its own signals, and ended there with
/// dispose().
///
/// Failure: nothing throws; everything is told through the log signals. After a loss it reconnects only when
/// told to, or when a record is sent.
class ComConnectionSocket : public QObject
{
    Q_OBJECT

public:
    explicit ComConnectionSocket(QObject* parent = nullptr);

    /// Blocks until the connection stands or the time-out of the settings is over. The settings are
    /// remembered.
    bool connectToServer(ConnectionSettings settings);

    /// Connects with the remembered settings; false at once when a socket exists.
    bool reconnect();

    /// Sends record in one frame, an empty payload when it is null. Without a socket it tries to reconnect
    /// once. False when the frame could not be handed to the system, or when too many bytes are waiting
    /// already.
    bool sendSerializedData(const DbBaseType* record, int type, int clientCallbackId);

    bool isConnected() const;

    /// The current socket, or null.
    QTcpSocket* socket() const { return m_socket; }

    /// The most bytes that may wait to be written before a send is refused.
    void setMaxPendingBytes(int bytes) { m_maxPendingBytes = bytes; }

    void closeConnection();

    /// Closes the connection, leaves the parent and destroys this object as soon as none of its slots is
    /// running. To be used by whoever may be called from one.
    void dispose();

    /// True when both ends of the connection are the same.
    static bool isConnectedToItself(const QTcpSocket& socket);

    void logDebug(const QString& text);
    void logInfo(const QString& text);
    void logError(const QString& text);

signals:
    void signal_connected();
    void signal_disconnected();
    void signal_disconnectInfo(QString peerAddr, uint peerPort, QString peerName);
    void signal_loggingMessage(QString message,
                               bool isErrorMessage); // for slots that want it; never emitted here
    void signal_logMessage(QString message);
    void signal_errorMessage(QString message);
    void signal_debugMessage(QString message);
    void signal_sigdb_dataReceived(int dataType, QByteArray& rawData, int clientCallBackId);

public slots:
    /// The number that later frames carry as their update message counter.
    void slot_setSendUpdateMessageCounter(qulonglong counter);

private slots:
    void slot_currentConnectionDisconnected();
    void slot_readDataFromSocket();
    void slot_readyRead();
    void slot_computeReceivedData();

public slots:
    /// Sends answer as the payload of one frame.
    void slot_sendSerializedData(QByteArray answer, int type, int clientCallbackId);

private:
    void installSocket(QTcpSocket* socket);
    void retire(QTcpSocket* socket);
    void reportConnectFailure(int timeoutMs);
    void resetCountersAndBuffers();
    void resetAfterNetworkError();
    QString describePeer(const QString& pattern) const;

    bool isBacklogged() const;
    QByteArray buildFrame(const QByteArray& payload, int type, int clientCallbackId);
    bool writeFrame(QByteArray frame);
    void countSentFrame();

    void processFrame(Frame frame);
    bool isExpectedCounter(quint64 previous);
    void checkUpdateCounter();
    void yieldToEventLoop();

    ConnectionSettings m_settings;
    int m_maxPendingBytes = 10000000;
    bool m_lastSendOk = false;
    QTimer* m_pollTimer;
    quint64 m_sendMessageCounter = 0;
    quint64 m_sendUpdateMessageCounter = 0;
    quint64 m_lastReceivedMessageCounter = 0;
    quint64 m_receivedUpdateMessageCounter = 0;
    quint64 m_storedUpdateMessageCounter = 0;
    FrameCutter m_received;
    int m_receivedCallbackId = 0;
    QTcpSocket* m_socket = nullptr;
    bool m_inEventProcessing = false;
    QElapsedTimer m_lastEventProcessing;
    bool m_isReading = false; // then the QTcpSocket is up the stack
    bool m_isDisposed = false;
    QList<QTcpSocket*> m_retired;
};

} // namespace base

#endif
