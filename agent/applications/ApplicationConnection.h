// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONCONNECTION_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONCONNECTION_H

#include <QObject>
#include <QTcpSocket>

#include "agent/applications/ApplicationInfo.h"
#include "agent/applications/ApplicationStream.h"
#include "agent/applications/Limits.h"
#include "agent/cells/Cell.h"
#include "agent/core/Clock.h"
#include "agent/core/ObjectId.h"

namespace base {
class DbBaseType;
}

namespace agent {

/// The connection of one application: its frames become signals, and requests to it become frames.
///
/// Threads: emits all signals from the event loop, never from inside ask() or commit().
/// Ownership: owns the socket.
/// Failure: disconnects an application, with a line in the log, if it sends malformed frames or records, does
/// not complete a frame in time, or leaves too much unread. A silent one is disconnected after the same time.
/// lost() comes once, however the connection ends.
class ApplicationConnection : public QObject, private ApplicationStream::Receiver
{
    Q_OBJECT

public:
    ApplicationConnection(QTcpSocket* socket, ApplicationId application, const Identity& identity,
                          Clock& clock, const Limits& limits, QObject* parent);

    /// The application's name in messages.
    QString name() const { return nameOf(m_info); }

    /// Everything but the number of cells.
    const ApplicationInfo& info() const { return m_info; }

    /// Counts a record refused by the listener.
    void countRefusal() { ++m_info.recordsRefused; }

    /// The memory of its unfinished frame.
    size_t memory() const { return m_memory; }

    /// Disconnects it, since its unfinished frame takes too much memory.
    void closeLarge();

    /// True once it has sent something that violates the protocol.
    bool isMalformed() const { return m_isMalformed; }

    /// True until it has completed a frame.
    bool isSilent() const { return m_stream.frames() == 0; }

    /// Disconnects a silent application. There is no warning if it has sent nothing: that harms no one.
    void closeSilent();

    void ask(int number, const ObjectId& id, const CellValue& value);
    void commit(const ObjectId& id, const CellValue& value);

signals:
    /// notify: the application wants a notification about the value.
    void valueReceived(const agent::ObjectId& id, const agent::CellValue& value, bool notify);
    void unsetReceived(const agent::ObjectId& tree);
    void answerReceived(int number, int errorStatus);
    void memoryChanged(size_t before, size_t after);
    void lost();

private:
    void readFrames();
    void watchFrame();
    void setMemory(size_t memory);
    void handleValue(const ObjectId& id, const CellValue& value, bool notify) override;
    void handleUnset(const ObjectId& tree) override;
    void handleAnswer(int number, int errorStatus) override;
    void sendBinding(int callbackId, int storeType, const ObjectId& id, const CellValue& value);
    void sendRecord(int dataType, int callbackId, const base::DbBaseType& record);
    void closeBecause(const QString& problem);
    void closeUnfinished();
    void handleDisconnected();

    QTcpSocket* m_socket;
    ApplicationStream m_stream;
    Clock& m_clock;
    ApplicationInfo m_info;
    quint64 m_sentFrames = 0;
    size_t m_memory = 0;
    bool m_isWatched = false;
    bool m_isClosing = false;
    bool m_isMalformed = false;
};

} // namespace agent

#endif
