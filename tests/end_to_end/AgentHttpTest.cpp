// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpServer>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"

using support::AgentProcess;
using support::FakeApplication;
using support::runUntil;

namespace {

const std::string webStatus = "127.3.1.200.4.1.1.3.4.115.104.111.112.3.119.101.98";
const std::string webSummary = "127.3.1.200.4.1.1.4.4.115.104.111.112.3.119.101.98";

class AgentHttp : public testing::Test
{
protected:
    void SetUp() override
    {
        m_agent = std::make_unique<AgentProcess>(QStringList{QStringLiteral("--http"),
                                                             QStringLiteral("127.0.0.1:%1").arg(m_port),
                                                             QStringLiteral("--grace"), QStringLiteral("0")});
        ASSERT_TRUE(m_agent->start()) << m_agent->log().constData();
    }

    struct Reply
    {
        int status = 0;
        QByteArray contentType;
        QByteArray text;

        QJsonObject json() const { return QJsonDocument::fromJson(text).object(); }
    };

    Reply get(const char* path)
    {
        const QUrl url(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(QLatin1String(path)));
        const std::unique_ptr<QNetworkReply> reply(m_manager.get(QNetworkRequest(url)));
        EXPECT_TRUE(runUntil([&] { return reply->isFinished(); }));
        return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
                reply->header(QNetworkRequest::ContentTypeHeader).toByteArray(), reply->readAll()};
    }

    bool waitForStatus(const char* status)
    {
        return support::askUntil(
            [&] { return get("/health").json()[QLatin1String("status")] == QLatin1String(status); });
    }

    QString applicationState()
    {
        return get("/api/checks")
            .json()[QLatin1String("applications")]
            .toArray()
            .at(0)
            .toObject()[QLatin1String("state")]
            .toString();
    }

    const quint16 m_port = AgentProcess::freePort();
    std::unique_ptr<AgentProcess> m_agent;
    QNetworkAccessManager m_manager;
};

} // namespace

TEST_F(AgentHttp, ShowsAnApplicationFromItsFirstValueToItsLoss)
{
    EXPECT_TRUE(m_agent->log().contains("serving the page on http://127.0.0.1:"))
        << m_agent->log().constData();
    EXPECT_EQ(get("/health").status, 200);
    FakeApplication application(m_agent->applicationPort());
    application.publish(webStatus, 2);
    application.publish(webSummary, std::string("no answer"));
    ASSERT_TRUE(waitForStatus("critical"));
    EXPECT_EQ(get("/health").status, 503);
    EXPECT_TRUE(get("/metrics").text.contains("\nvigil_check_severity{first=\"shop\",second=\"web\"} 3\n"));
    EXPECT_TRUE(get("/metrics").text.contains("\nvigil_agent_cells 2\n"));
    EXPECT_EQ(applicationState(), QStringLiteral("connected"));
    application.close();
    ASSERT_TRUE(waitForStatus("unknown"));
    EXPECT_EQ(applicationState(), QStringLiteral("lost"));
    EXPECT_TRUE(get("/api/checks").text.contains("No connection to the application since "));
}

TEST_F(AgentHttp, ServesItsPage)
{
    EXPECT_TRUE(get("/").text.contains("<!DOCTYPE html>"));
    EXPECT_EQ(get("/page.js").contentType, "text/javascript; charset=utf-8");
    EXPECT_EQ(get("/nothing").status, 404);
}

TEST_F(AgentHttp, EndsCleanlyWithARequestUnderWay)
{
    QTcpSocket slow;
    slow.connectToHost(QHostAddress(QHostAddress::LocalHost), m_port);
    ASSERT_TRUE(runUntil([&] { return slow.state() == QAbstractSocket::ConnectedState; }));
    slow.write("GET / HTTP/1.1\r\n");
    ASSERT_EQ(get("/health").status, 200);
    EXPECT_EQ(m_agent->stop(), 0);
}

TEST(AgentHttpStart, AnAddressInUseIsAnError)
{
    QTcpServer occupant;
    ASSERT_TRUE(occupant.listen(QHostAddress(QHostAddress::LocalHost)));
    const AgentProcess::Outcome outcome = AgentProcess::run(
        {QStringLiteral("--standalone"), QStringLiteral("udp:127.0.0.1:%1").arg(AgentProcess::freePort()),
         QStringLiteral("--listen"), QStringLiteral("127.0.0.1:0"), QStringLiteral("--http"),
         QStringLiteral("127.0.0.1:%1").arg(occupant.serverPort())});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.err.contains("cannot serve HTTP on 127.0.0.1:")) << outcome.err.constData();
}
