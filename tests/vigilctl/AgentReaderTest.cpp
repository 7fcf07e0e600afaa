// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include "support/RunUntil.h"
#include "vigilctl/AgentReader.h"

using support::runUntil;
using vigilctl::AgentReader;
using vigilctl::AnswerLimits;

namespace {

/// A peer on the port of an agent. It answers any request with the bytes of start, then with more of them
/// every few milliseconds.
class AgentReaderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_server.listen(QHostAddress(QHostAddress::LocalHost)));
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            m_peer = m_server.nextPendingConnection();
            QObject::connect(m_peer, &QTcpSocket::readyRead, [this] {
                request += m_peer->readAll();
                if (!request.endsWith("\r\n\r\n"))
                    return;
                m_peer->write(start);
                m_drip.start(5);
            });
            QObject::connect(m_peer, &QTcpSocket::disconnected, [this] {
                m_drip.stop();
                isClosed = true;
            });
        });
        QObject::connect(&m_drip, &QTimer::timeout, [this] {
            if (m_peer->bytesToWrite() == 0)
                m_peer->write(more);
        });
    }

    void read(const AnswerLimits& limits)
    {
        AgentReader reader(QUrl(QStringLiteral("http://127.0.0.1:%1/").arg(m_server.serverPort())), limits);
        QObject::connect(&reader, &AgentReader::finished, [&](const QByteArray& text, const QString& reason) {
            answer = text;
            problem = reason;
            ++finishes;
        });
        reader.read();
        EXPECT_TRUE(runUntil([&] { return finishes > 0 && (more.isEmpty() || isClosed); }));
    }

    QByteArray start = "HTTP/1.1 200 OK\r\n\r\n";
    QByteArray more;
    QByteArray request;
    QByteArray answer;
    QString problem;
    int finishes = 0;
    bool isClosed = false;

private:
    QTimer m_drip;
    QTcpSocket* m_peer = nullptr;
    QTcpServer m_server; // ends first: its sockets stop the timer
};

} // namespace

TEST_F(AgentReaderTest, ReadsAnAnswerUpToItsLimit)
{
    start = "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n" + QByteArray(100, 'a');
    AnswerLimits limits;
    limits.bytes = 100;
    read(limits);
    EXPECT_EQ(problem, QString());
    EXPECT_EQ(answer, QByteArray(100, 'a'));
    EXPECT_TRUE(request.contains("Accept-Encoding: identity\r\n")) << "no answer that grows when unpacked";
}

// Any program on the port could fill the memory.
TEST_F(AgentReaderTest, AnEndlessAnswerIsGivenUp)
{
    more = QByteArray(100'000, 'a');
    AnswerLimits limits;
    limits.bytes = 1'000'000;
    read(limits);
    EXPECT_EQ(problem, QStringLiteral("its answer is longer than 1000000 bytes"));
    EXPECT_TRUE(answer.isEmpty());
    EXPECT_EQ(finishes, 1);
}

// Each byte started the time-out again.
TEST_F(AgentReaderTest, AnAnswerInDripsIsGivenUp)
{
    more = " ";
    AnswerLimits limits;
    limits.wholeMs = 500;
    read(limits);
    EXPECT_EQ(problem, QStringLiteral("its answer takes longer than 500 ms"));
}

TEST_F(AgentReaderTest, HeadersInDripsAreSilence)
{
    start = "HTTP/1.1 200 OK\r\n";
    more = "X-More: and more\r\n";
    AnswerLimits limits;
    limits.silenceMs = 200;
    read(limits);
    EXPECT_EQ(problem, QStringLiteral("it does not answer"));
}
