// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_SILENTSERVICES_H
#define VIGIL_TESTS_LIFECYCLE_SILENTSERVICES_H

#include <QList>
#include <QTcpServer>
#include <QTcpSocket>

/// A port on which nobody listens.
int refusingPort();

/// Lets the system complete connections but never reads from them.
class NeverReadingService
{
public:
    NeverReadingService();
    int port() const { return m_server.serverPort(); }

private:
    QTcpServer m_server;
};

/// Has so many unaccepted connections that the system leaves further attempts without an answer.
class OverrunService
{
public:
    OverrunService();
    ~OverrunService();
    int port() const { return m_server.serverPort(); }

private:
    QTcpServer m_server;
    QList<QTcpSocket*> m_waiting;
};

/// Reads everything that arrives, or hangs up as soon as anything does, always or only once.
class ReadingService
{
public:
    enum class OnFirstBytes { GoOn, HangUp, HangUpThenRead, HangUpThenNeverRead };

    explicit ReadingService(OnFirstBytes action = OnFirstBytes::GoOn);
    int port() const { return m_server.serverPort(); }
    /// Run the test's event loop until text has arrived, or until a peer has closed its connection.
    bool waitForText(const QByteArray& text) const;
    bool waitForLostPeer() const;

private:
    QTcpServer m_server;
    QByteArray m_received;
    void accept(OnFirstBytes action);

    bool m_hasLostPeer = false;
};

#endif
