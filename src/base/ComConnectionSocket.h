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

#include <functional>

#include "base/ConnectionSettings.h"
#include "base/QuietSocket.h"
#include "base/wire/DbBaseType.h"
#include "base/wire/FrameCutter.h"

namespace base {

/// The TCP connection to the local SNMP service ("CCS" in its log texts).
///
/// Sends records as numbered frames and reassembles received ones; FrameHeader has their layout. Frames are
/// numbered from 1 on each new connection, and received frames are dropped until number 1 arrives. After a
/// bad frame it drops everything received so far and accepts any number once.
///
/// Threads: lives in one thread. connectToServer() blocks up to its time-out, a partial write up to 20 ms.
/// During a burst of received frames it lets the thread's other events run.
///
/// Ownership: owns its QTcpSocket. Slots of its signals may close it, or destroy it with dispose().
///
/// Failure: nothing throws; the log signals report all problems. After a loss it reconnects only on request,
/// or to send a record.
class ComConnectionSocket : public QObject
{
    Q_OBJECT

public:
    explicit ComConnectionSocket(QObject* parent = nullptr);

    /// Decides about a new connection before anything is sent. The default accepts every peer.
    using PeerCheck = std::function<bool(const QTcpSocket&)>;
    void setPeerCheck(PeerCheck check) { m_peerCheck = std::move(check); }

    /// Called if memory runs out in a call from the QTcpSocket: bytes or the loss of the connection may have
    /// been missed. Not a signal, because the signals of this class are fixed.
    void setOutOfMemoryHandler(std::function<void()> handler) { m_onOutOfMemory = std::move(handler); }

    /// Blocks until it is connected or the time-out of the settings expires. Remembers the settings.
    bool connectToServer(ConnectionSettings settings);

    /// Connects with the remembered settings. Fails immediately if a socket exists.
    bool reconnect();

    /// Sends record in one frame, or an empty payload if it is null. Without a socket it tries to reconnect
    /// once. False if the system did not take the frame, or if too many bytes are pending already.
    bool sendSerializedData(const DbBaseType* record, int type, int clientCallbackId);

    /// The same for an answer the peer waits for: twice as many bytes may be pending.
    bool sendAnswer(const DbBaseType& record, int type, int clientCallbackId);

    bool isConnected() const;

    /// The current socket, or null.
    QTcpSocket* socket() const { return m_socket; }

    /// With more bytes pending, sends fail.
    void setMaxPendingBytes(int bytes) { m_maxPendingBytes = bytes; }

    /// True while more than half of the bytes allowed are pending.
    bool isCongested() const;

    /// True while the system has not taken all bytes.
    bool hasPendingBytes() const;

    /// Waits until the system takes some of the pending bytes. False on time-out, or without a connection.
    bool waitForBytesWritten(int timeoutMs);

    /// While gathering, frames wait for flush(), or until there are about 64 kB of them, and share a system
    /// call. The owner must call flush() before its thread rests.
    void setGathering(bool isGathering);

    /// Hands all frames over to the system, as far as it takes them.
    void flush();

    void closeConnection();

    /// Closes the connection, leaves the parent and destroys this object once all of its slots have returned.
    /// Use it where delete may run inside one of them.
    void dispose();

    /// True if both ends of the connection are the same.
    static bool isConnectedToItself(const QTcpSocket& socket);

    void logDebug(const QString& text);
    void logInfo(const QString& text);
    void logError(const QString& text);

signals:
    void signal_connected();
    void signal_disconnected();
    void signal_disconnectInfo(QString peerAddr, uint peerPort, QString peerName);
    void signal_loggingMessage(QString message, bool isErrorMessage); // never emitted by this class
    void signal_logMessage(QString message);
    void signal_errorMessage(QString message);
    void signal_debugMessage(QString message);
    void signal_sigdb_dataReceived(int dataType, QByteArray& rawData, int clientCallBackId);

public slots:
    /// Sets the update message counter of later frames.
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
    template <typename Action>
    void guarded(Action action);
    void releaseLostSocket();
    void installSocket(QuietSocket* socket);
    void retire(QTcpSocket* socket);
    void reportConnectFailure(int timeoutMs);
    void resetCountersAndBuffers();
    void resetAfterNetworkError();
    QString describePeer(const QString& pattern) const;

    bool isBacklogged(int limit) const;
    bool isDebugWanted() const;
    bool send(const DbBaseType* record, int type, int clientCallbackId, int limit);
    void sendFrame(QByteArray frame, int type, int clientCallbackId);
    void writeHeader(QByteArray& frame, int type, int clientCallbackId);
    bool writeFrame(const QByteArray& frame);
    void countSentFrame();

    void askSystem();
    void processFrame(Frame frame);
    bool isExpectedCounter(quint64 previous);
    void checkUpdateCounter();
    void yieldToEventLoop();

    ConnectionSettings m_settings;
    std::function<void()> m_onOutOfMemory = [] {};
    PeerCheck m_peerCheck = [](const QTcpSocket&) { return true; };
    int m_maxPendingBytes = 10000000;
    bool m_lastSendOk = false;
    bool m_isGathering = false;
    QTimer* m_pollTimer;
    quint64 m_sendMessageCounter = 0;
    quint64 m_sendUpdateMessageCounter = 0;
    quint64 m_lastReceivedMessageCounter = 0;
    quint64 m_receivedUpdateMessageCounter = 0;
    quint64 m_storedUpdateMessageCounter = 0;
    FrameCutter m_received;
    int m_receivedCallbackId = 0;
    QuietSocket* m_socket = nullptr;
    bool m_inEventProcessing = false;
    QElapsedTimer m_lastEventProcessing;
    bool m_isReading = false; // a slot called by the QTcpSocket is running
    bool m_isDisposed = false;
    QList<QTcpSocket*> m_retired;
};

} // namespace base

#endif
