#ifndef VIGIL_AGENT_APPLICATIONCONNECTION_H
#define VIGIL_AGENT_APPLICATIONCONNECTION_H

#include <QObject>
#include <QTcpSocket>

#include <string>

#include "CellStore.h"
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
    ApplicationConnection(QTcpSocket* socket, OwnerId owner, QObject* parent);

    /// How messages call the application.
    QString name() const;

    void ask(int number, const ObjectId& id, const CellValue& value);
    void commit(const ObjectId& id, const CellValue& value);

signals:
    void valueReceived(const agent::ObjectId& id, const agent::CellValue& value);
    void unsetReceived(const agent::ObjectId& tree);
    void answerReceived(int number, int errorStatus);
    void lost();

private:
    void readFrames();
    QString recordProblem(const FrameAssembler::Frame& frame);
    void handleRecord(const FrameAssembler::Frame& frame);
    void handleInt(const QByteArray& payload);
    void handleString(const QByteArray& payload);
    void sendBinding(int callbackId, int storeType, const ObjectId& id, const CellValue& value);
    void sendRecord(int dataType, int callbackId, const base::DbBaseType& record);
    void closeBecause(const QString& problem);
    void handleDisconnected();

    QTcpSocket* m_socket;
    FrameAssembler m_frames;
    const OwnerId m_owner;
    const QString m_peer;
    quint64 m_sentFrames = 0;
    bool m_isClosing = false;
};

} // namespace agent

#endif
