// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>

#include "support/RunUntil.h"

namespace {

/// Answers every request with the same text.
class VigilctlTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_server.listen(QHostAddress(QHostAddress::LocalHost)));
        QObject::connect(&m_server, &QTcpServer::newConnection, [this] {
            QTcpSocket* socket = m_server.nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] {
                m_request += socket->readAll();
                if (!m_request.endsWith("\r\n\r\n"))
                    return;
                ++m_requests;
                m_path = m_request.split(' ').value(1);
                m_request.clear();
                socket->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(m_answer.size()) +
                              "\r\nConnection: close\r\n\r\n" + m_answer);
                socket->disconnectFromHost();
            });
        });
    }

    QStringList url() const
    {
        return {QStringLiteral("--url"), QStringLiteral("http://127.0.0.1:%1/").arg(m_server.serverPort())};
    }

    /// Returns the exit code.
    int run(const QStringList& arguments)
    {
        QProcess program;
        program.start(QStringLiteral(VIGILCTL), arguments);
        EXPECT_TRUE(support::runUntil([&] { return program.state() == QProcess::NotRunning; }));
        m_out = program.readAllStandardOutput();
        m_err = program.readAllStandardError();
        return program.exitCode();
    }

    QTcpServer m_server;
    QByteArray m_request;
    QByteArray m_path;
    int m_requests = 0;
    QByteArray m_answer = "{\"version\": 1, \"host\": \"shop1\", \"status\": \"warning\", \"checks\": [],"
                          " \"counts\": {\"warning\": 1}}";
    QByteArray m_out;
    QByteArray m_err;
};

} // namespace

TEST_F(VigilctlTest, StatusAsksTheAgentOnce)
{
    EXPECT_EQ(run(QStringList{QStringLiteral("status")} + url()), 1);
    EXPECT_EQ(m_path, "/api/checks");
    EXPECT_EQ(m_requests, 1);
    EXPECT_EQ(m_out, "WARNING - shop1: 0 critical, 1 warning, 0 unknown, 0 ok\n");
}

TEST_F(VigilctlTest, JsonIsTheAgentsDocumentInOneLine)
{
    EXPECT_EQ(run(QStringList{QStringLiteral("status"), QStringLiteral("--json")} + url()), 1);
    EXPECT_TRUE(m_out.startsWith("{\"checks\":[],")) << m_out.constData();
    EXPECT_EQ(m_out.count('\n'), 1);
}

// The exit code was that of the report nobody could read.
TEST_F(VigilctlTest, OutputThatCannotBeWrittenIsUnknown)
{
    QProcess program;
    program.setStandardOutputFile(QStringLiteral("/dev/full"));
    program.start(QStringLiteral(VIGILCTL), QStringList{QStringLiteral("status")} + url());
    EXPECT_TRUE(support::runUntil([&] { return program.state() == QProcess::NotRunning; }));
    EXPECT_EQ(program.exitCode(), 3);
    EXPECT_TRUE(program.readAllStandardError().startsWith("vigilctl: cannot write to standard output: "));
}

TEST_F(VigilctlTest, AMissingAgentIsUnknown)
{
    const QStringList gone = url();
    m_server.close();
    EXPECT_EQ(run(QStringList{QStringLiteral("status")} + gone), 3);
    EXPECT_TRUE(m_err.startsWith("vigilctl: no answer from the agent at http://127.0.0.1:"))
        << m_err.constData();
    EXPECT_TRUE(m_out.isEmpty());
}

TEST_F(VigilctlTest, AnotherProgramOnThePortIsUnknown)
{
    m_answer = "<html>";
    EXPECT_EQ(run(QStringList{QStringLiteral("status")} + url()), 3);
    EXPECT_TRUE(m_err.contains("it is not an agent")) << m_err.constData();
}

TEST_F(VigilctlTest, WrongArgumentsAreUnknown)
{
    EXPECT_EQ(run({}), 3);
    EXPECT_EQ(run({QStringLiteral("statsu")}), 3);
    EXPECT_EQ(run({QStringLiteral("status"), QStringLiteral("more")}), 3);
    EXPECT_EQ(run({QStringLiteral("status"), QStringLiteral("--url"), QStringLiteral("ftp://127.0.0.1/")}),
              3);
    EXPECT_EQ(run({QStringLiteral("--help")}), 0);
    EXPECT_EQ(m_requests, 0);
}

// The exit code was 1, which means WARNING.
TEST_F(VigilctlTest, AnUnknownOptionIsUnknown)
{
    EXPECT_EQ(run({QStringLiteral("status"), QStringLiteral("--colour")}), 3);
    EXPECT_EQ(m_err, "vigilctl: Unknown option 'colour'.\n");
    EXPECT_EQ(run({QStringLiteral("status"), QStringLiteral("--url")}), 3);
    EXPECT_TRUE(m_err.startsWith("vigilctl: ")) << m_err.constData();
}

TEST_F(VigilctlTest, WatchAsksAgain)
{
    QProcess program;
    program.start(QStringLiteral(VIGILCTL), QStringList{QStringLiteral("watch")} + url());
    EXPECT_TRUE(support::runUntil([&] { return m_requests >= 2; }));
    m_server.close(); // it goes on while the agent is away
    EXPECT_TRUE(support::runUntil([&] {
        m_err += program.readAllStandardError();
        return m_err.contains("no answer from the agent");
    }));
    EXPECT_EQ(program.state(), QProcess::Running);
    program.kill();
    program.waitForFinished();
}

TEST_F(VigilctlTest, TheManualPageExplainsEveryOption)
{
    QFile manual(QStringLiteral(VIGILCTL_MANUAL));
    ASSERT_TRUE(manual.open(QIODevice::ReadOnly));
    const QByteArray page = manual.readAll();
    EXPECT_EQ(run({QStringLiteral("--help")}), 0);
    static const QRegularExpression option(QStringLiteral("(--[a-z-]+)"));
    auto match = option.globalMatch(QString::fromUtf8(m_out));
    int options = 0;
    for (; match.hasNext(); ++options) {
        const QByteArray name = match.next().captured(1).toUtf8();
        EXPECT_TRUE(page.contains("**" + name + "**")) << name.constData();
    }
    EXPECT_GE(options, 4);
}
