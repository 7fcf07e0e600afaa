// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_SILENTSERVICES_H
#define VIGIL_TESTS_LIFECYCLE_SILENTSERVICES_H

#include <QElapsedTimer>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>
#include <utility>

/// A port without a listener, for as long as the test program runs.
int refusingPort();

/// Accepts connections but never reads.
class NeverReadingService
{
public:
    NeverReadingService();
    int port() const { return m_server.serverPort(); }

private:
    QTcpServer m_server;
};

/// Has a full backlog: the system does not answer further connects.
class OverrunService
{
public:
    OverrunService();
    ~OverrunService();
    int port() const { return m_server.serverPort(); }

    /// Answers connects from now on.
    QTcpServer& makeRoom();

private:
    QTcpServer m_server;
    QList<QTcpSocket*> m_waiting;
};

/// Answers connects late, and then reads little at a time.
class SlowService
{
public:
    SlowService();

    /// No connect is answered before this holds, however late the host begins with it.
    void answerOnlyOnce(std::function<bool()> mayAnswer) { m_mayAnswer = std::move(mayAnswer); }

    int port() const { return m_overrun.port(); }

    /// How many connections have been answered.
    int connections() const { return m_connections; }

private:
    void accept();

    OverrunService m_overrun;
    std::function<bool()> m_mayAnswer = [] { return true; };
    QElapsedTimer m_age;
    QTimer m_answer;
    int m_connections = 0;
};

/// Reads everything, or closes the connection at the first bytes, always or only once.
class ReadingService
{
public:
    enum class OnFirstBytes { GoOn, HangUp, HangUpThenRead, HangUpThenNeverRead };

    explicit ReadingService(OnFirstBytes action = OnFirstBytes::GoOn);
    int port() const { return m_server.serverPort(); }

    /// Run the test's event loop until text arrives, or until a peer closes its connection.
    bool waitForText(const QByteArray& text) const;
    bool waitForLostPeer() const;

private:
    QTcpServer m_server;
    QByteArray m_received;
    void accept(OnFirstBytes action);

    bool m_hasLostPeer = false;
};

#endif
