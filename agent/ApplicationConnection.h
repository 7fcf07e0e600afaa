#ifndef VIGIL_AGENT_APPLICATIONCONNECTION_H
#define VIGIL_AGENT_APPLICATIONCONNECTION_H

#include <QObject>
#include <QTcpSocket>

#include <string>

#include "CellStore.h"
#include "Clock.h"
#include "ConnectionInfo.h"
#include "FrameAssembler.h"

namespace base {
class DbBaseType;
}

namespace agent {

/// The connection of one application.
///
/// Purpose: turns its frames and records into signals, and what the agent has to say into frames.
///
/// Threads: the agent has one; all signals are emitted from the event loop, never from inside ask() or
/// commit().
///
/// Ownership: takes the socket.
///
/// Failure: an application that sends what is not a frame or not a record, or that leaves too much unread, is
/// disconnected with a line in the log. lost() is emitted once, however the connection ended.
class ApplicationConnection : public QObject
{
    Q_OBJECT

public:
    ApplicationConnection(QTcpSocket* socket, OwnerId owner, const Clock& clock, QObject* parent);

    /// How messages call the application.
    QString name() const;

    /// All but the number of cells.
    const ConnectionInfo& info() const { return m_info; }

    /// Counts a record that whoever listens does not serve.
    void countRefusal() { ++m_info.recordsRefused; }

    void ask(int number, const ObjectId& id, const CellValue& value);
    void commit(const ObjectId& id, const CellValue& value);

signals:
    /// isNotable: the application wishes a notification about the value.
    void valueReceived(const agent::ObjectId& id, const agent::CellValue& value, bool isNotable);
    void unsetReceived(const agent::ObjectId& tree);
    void answerReceived(int number, int errorStatus);
    void lost();

private:
    void readFrames();
    QString recordProblem(const FrameAssembler::Frame& frame);
    void handleRecord(const FrameAssembler::Frame& frame);
    void handleInt(const QByteArray& payload, bool isNotable);
    void handleString(const QByteArray& payload, bool isNotable);
    void sendBinding(int callbackId, int storeType, const ObjectId& id, const CellValue& value);
    void sendRecord(int dataType, int callbackId, const base::DbBaseType& record);
    void closeBecause(const QString& problem);
    void handleDisconnected();

    QTcpSocket* m_socket;
    FrameAssembler m_frames;
    const Clock& m_clock;
    ConnectionInfo m_info;
    const QString m_peer;
    quint64 m_sentFrames = 0;
    bool m_isClosing = false;
};

} // namespace agent

#endif
