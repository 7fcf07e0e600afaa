// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CONTROL_CONTROLCONNECTION_H
#define VIGIL_AGENT_CONTROL_CONTROLCONNECTION_H

#include <QByteArray>
#include <QLocalSocket>
#include <QObject>

#include "agent/control/ControlReply.h"
#include "agent/core/Clock.h"
#include "agent/core/Timer.h"
#include "agent/core/User.h"

namespace agent {

/// One operator's connection: a line with a request, the reply, the end.
///
///     state    | a line             | a longer line      | time over | peer has gone | reply sent
///     ---------+--------------------+--------------------+-----------+---------------+-----------
///     Reading  | handle → Replying  | refuse → Replying  | → Closed  | → Closed      | cannot be
///     Replying | ignored            | ignored            | → Closed  | → Closed      | → Closed
///
/// Ownership: it owns the socket, and deletes itself once it is closed. The clock must outlive it.
class ControlConnection : public QObject
{
    Q_OBJECT

public:
    static constexpr int maxRequest = 8 * 1024; ///< bytes of a line
    static constexpr qint64 requestMs = 10'000; ///< for the request, and for each part of the reply
    static constexpr qint64 maxPending = qint64{64} * 1024;

    enum class State { Reading, Replying, Closed };

    ControlConnection(QLocalSocket* socket, const User& user, Clock& clock, const ControlHandler& handler,
                      QObject* parent);

    /// Reads the request. Connect the signals first.
    void start();

    /// True if the peer has taken enough for another piece of the reply.
    bool canWrite() const;

    /// Makes the next piece and returns its size.
    int writePiece();

signals:
    /// canWrite() may have become true.
    void ready();

    void closed();

private:
    void read();
    void reply(ControlReply reply);
    void handleTaken();
    void close();

    QLocalSocket* const m_socket;
    const User m_user;
    const ControlHandler& m_handler;
    State m_state = State::Reading;
    QByteArray m_request;
    std::unique_ptr<TextPieces> m_pieces; // those not made yet; null once all are
    Timer m_deadline;
};

} // namespace agent

#endif
