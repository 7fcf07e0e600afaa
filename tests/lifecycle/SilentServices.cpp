// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "lifecycle/SilentServices.h"

#include <QCoreApplication>
#include <QHostAddress>

#include "support/FreePort.h"
#include "support/RunUntil.h"

int refusingPort()
{
    auto* reserved = new QTcpSocket(QCoreApplication::instance()); // or another test would listen there
    support::bindToFreePort(*reserved);
    return reserved->localPort();
}

NeverReadingService::NeverReadingService()
{
    m_server.listen(QHostAddress::LocalHost);
    m_server.pauseAccepting();
}

OverrunService::OverrunService()
{
    constexpr int moreThanAnyBacklog = 300;
    m_server.listen(QHostAddress::LocalHost);
    m_server.pauseAccepting();
    for (int i = 0; i < moreThanAnyBacklog; ++i) {
        m_waiting.append(new QTcpSocket);
        m_waiting.last()->connectToHost(QHostAddress(QHostAddress::LocalHost), m_server.serverPort());
        if (!m_waiting.last()->waitForConnected(200))
            return;
    }
}

OverrunService::~OverrunService()
{
    qDeleteAll(m_waiting);
}

QTcpServer& OverrunService::makeRoom()
{
    qDeleteAll(m_waiting);
    m_waiting.clear();
    m_server.resumeAccepting();
    return m_server;
}

/// The system repeats an unanswered connect after 1 and 3 seconds, or after 1, 2, and 3.
SlowService::SlowService()
{
    constexpr int answerMs = 2500;
    constexpr int lookMs = 20;
    m_age.start();
    QObject::connect(&m_answer, &QTimer::timeout, &m_answer, [this] {
        if (!m_age.hasExpired(answerMs) || !m_mayAnswer())
            return;
        m_answer.stop();
        QTcpServer& server = m_overrun.makeRoom();
        QObject::connect(&server, &QTcpServer::newConnection, &m_answer, [this] { accept(); });
    });
    m_answer.start(lookMs);
}

void SlowService::accept()
{
    constexpr int turnMs = 20;
    constexpr int bytesEachTurn = 64000;
    while (QTcpSocket* peer = m_overrun.makeRoom().nextPendingConnection()) {
        ++m_connections;
        peer->setReadBufferSize(bytesEachTurn);
        auto* turn = new QTimer(peer);
        QObject::connect(turn, &QTimer::timeout, peer, [peer] { peer->readAll(); });
        turn->start(turnMs);
    }
}

ReadingService::ReadingService(OnFirstBytes action)
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this, action] { accept(action); });
    m_server.listen(QHostAddress::LocalHost);
}

void ReadingService::accept(OnFirstBytes action)
{
    QTcpSocket* peer = m_server.nextPendingConnection();
    const bool hangUp = action == OnFirstBytes::HangUp || (action != OnFirstBytes::GoOn && !m_hasLostPeer);
    if (action == OnFirstBytes::HangUpThenNeverRead && !hangUp)
        return peer->setReadBufferSize(1);
    QObject::connect(peer, &QTcpSocket::readyRead, &m_server, [this, peer, hangUp] {
        m_received += peer->readAll();
        if (hangUp)
            peer->disconnectFromHost();
    });
    QObject::connect(peer, &QTcpSocket::disconnected, &m_server, [this] { m_hasLostPeer = true; });
}

bool ReadingService::waitForText(const QByteArray& text) const
{
    return support::runUntil([&] { return m_received.contains(text); });
}

bool ReadingService::waitForLostPeer() const
{
    return support::runUntil([&] { return m_hasLostPeer; });
}
