// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>

#include <algorithm>
#include <cmath>

#include "agent/http/HttpPages.h"
#include "support/PublishedChecks.h"
#include "support/RunUntil.h"

using agent::HttpPages;
using agent::HttpReply;

class HttpPagesTest : public ::testing::Test
{
protected:
    HttpReply get(const QByteArray& path, const QByteArray& accept = {})
    {
        HttpReply reply = m_pages.replyTo({path, accept});
        if (reply.pieces) {
            while (reply.pieces->appendTo(reply.text)) {
            }
        }
        return reply;
    }

    QJsonObject json(const QByteArray& path)
    {
        const HttpReply reply = get(path);
        EXPECT_EQ(reply.contentType, "application/json");
        QJsonParseError error = {};
        const QJsonDocument document = QJsonDocument::fromJson(reply.text, &error);
        EXPECT_EQ(error.error, QJsonParseError::NoError) << reply.text.constData();
        return document.object();
    }

    QJsonObject check(int position)
    {
        return json("/api/checks")[QLatin1String("checks")].toArray().at(position).toObject();
    }

    static QString text(const QJsonObject& object, const char* member)
    {
        return object[QLatin1String(member)].toString();
    }

    support::PublishedChecks m_checks;
    agent::ApplicationServer m_applications{m_checks.cells, m_checks.clock, {}};
    agent::History m_history{m_checks.list, m_checks.clock,
                             [](agent::ApplicationId) { return agent::User(); }};
    HttpPages m_pages{{m_checks.list, m_checks.store, m_applications, m_checks.clock}, m_history, [] {
                          return std::vector<agent::AgentFigure>{{"cells", "Published cells.", false, 7},
                                                                 {"rejoins", "Rejoins.", true, 2}};
                      }};
};

TEST_F(HttpPagesTest, ThePageComesWithItsOwnFilesAlone)
{
    const HttpReply page = get("/");
    EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
    EXPECT_TRUE(page.text.contains("src=\"/page.js\""));
    EXPECT_FALSE(page.text.contains("http:") || page.text.contains("https:") ||
                 page.text.contains("<style") || page.text.contains("onclick"));
    EXPECT_EQ(get("/page.js").contentType, "text/javascript; charset=utf-8");
    EXPECT_EQ(get("/page.css").contentType, "text/css; charset=utf-8");
    EXPECT_FALSE(get("/page.css").text.contains("url("));
    // Nothing that makes HTML out of a text.
    for (const char* danger : {"innerHTML", "outerHTML", "insertAdjacentHTML", "document.write", "eval("})
        EXPECT_FALSE(get("/page.js").text.contains(danger)) << danger;
}

TEST_F(HttpPagesTest, OtherPathsAreNotFound)
{
    for (const char* path :
         {"", "/x", "/page.css/", "//", "/../../etc/passwd", "/api/history/", "/api/history/x",
          "/api/history/-1", "/api/history/99999999999", "/api/history/1"})
        EXPECT_EQ(get(path).status, 404) << path;
}

TEST_F(HttpPagesTest, AHostWithoutChecksIsUnknown)
{
    const QJsonObject document = json("/api/checks");
    EXPECT_EQ(text(document, "status"), QStringLiteral("unknown"));
    EXPECT_TRUE(document[QLatin1String("checks")].toArray().isEmpty());
    EXPECT_EQ(get("/health").status, 200);
}

TEST_F(HttpPagesTest, ChecksComeWithTheirMetrics)
{
    m_checks.publish({"shop", "web"}, 1, "slow");
    m_checks.publishMetric({"shop", "web", "load"}, 1, "85.5");
    m_checks.publishMetric({"shop", "web", "name"}, 0, "text");
    m_checks.publish({"shop", "db"}, 0);
    m_checks.clock.advance(1500);
    const QJsonObject web = check(0);
    EXPECT_EQ(text(web, "name"), QStringLiteral("shop/web"));
    EXPECT_EQ(text(web, "status"), QStringLiteral("warning"));
    EXPECT_EQ(web[QLatin1String("severity")].toInt(), 2);
    EXPECT_EQ(text(web, "summary"), QStringLiteral("slow"));
    EXPECT_EQ(text(web, "since"), QStringLiteral("2026-01-31T12:34:56Z"));
    EXPECT_EQ(web[QLatin1String("ageSeconds")].toDouble(), 1.5);
    const QJsonArray metrics = web[QLatin1String("metrics")].toArray();
    ASSERT_EQ(metrics.size(), 2);
    const QJsonObject load = metrics.at(0).toObject();
    EXPECT_EQ(load[QLatin1String("value")].toDouble(), 85.5);
    EXPECT_EQ(text(load, "unit"), QStringLiteral("%"));
    const QJsonObject warning = load[QLatin1String("warning")].toObject();
    EXPECT_EQ(text(warning, "text"), QStringLiteral("~:80"));
    EXPECT_TRUE(warning[QLatin1String("lower")].isNull());
    EXPECT_EQ(warning[QLatin1String("upper")].toInt(), 80);
    EXPECT_TRUE(load[QLatin1String("critical")].toObject()[QLatin1String("inverse")].toBool());
    EXPECT_TRUE(metrics.at(1).toObject()[QLatin1String("value")].isNull());
    EXPECT_EQ(text(check(1), "name"), QStringLiteral("shop/db"));
}

// The keywords that the schema uses.
namespace {

bool hasType(const QJsonValue& value, const QString& type)
{
    if (type == QLatin1String("integer"))
        return value.isDouble() && value.toDouble() == std::floor(value.toDouble());
    return (type == QLatin1String("object") && value.isObject()) ||
           (type == QLatin1String("array") && value.isArray()) ||
           (type == QLatin1String("string") && value.isString()) ||
           (type == QLatin1String("number") && value.isDouble()) ||
           (type == QLatin1String("boolean") && value.isBool()) ||
           (type == QLatin1String("null") && value.isNull());
}

bool hasTypeOf(const QJsonValue& value, const QJsonValue& types)
{
    const QJsonArray all = types.isArray() ? types.toArray() : QJsonArray{types};
    return std::any_of(all.begin(), all.end(),
                       [&](const QJsonValue& type) { return hasType(value, type.toString()); });
}

void expectValid(const QJsonValue& value, QJsonObject schema, const QJsonObject& definitions,
                 const QString& path)
{
    if (schema.contains(QLatin1String("$ref")))
        schema =
            definitions[schema[QLatin1String("$ref")].toString().section(QLatin1Char('/'), -1)].toObject();
    ASSERT_FALSE(schema.isEmpty()) << qPrintable(path);
    EXPECT_TRUE(hasTypeOf(value, schema[QLatin1String("type")])) << qPrintable(path);
    if (schema.contains(QLatin1String("enum"))) {
        EXPECT_TRUE(schema[QLatin1String("enum")].toArray().contains(value)) << qPrintable(path);
    }
    for (const QJsonValue& each : value.toArray())
        expectValid(each, schema[QLatin1String("items")].toObject(), definitions,
                    path + QStringLiteral("[]"));
    const QJsonObject object = value.toObject();
    const QJsonObject properties = schema[QLatin1String("properties")].toObject();
    for (const QJsonValue& name : schema[QLatin1String("required")].toArray())
        EXPECT_TRUE(object.contains(name.toString()))
            << qPrintable(path + QLatin1Char('.') + name.toString());
    for (const QString& name : object.keys())
        expectValid(object[name], properties[name].toObject(), definitions, path + QLatin1Char('.') + name);
}

} // namespace

TEST_F(HttpPagesTest, TheDocumentFollowsItsSchema)
{
    m_checks.publish({"shop", "web"}, 1, "slow");
    m_checks.publishMetric({"shop", "web", "load"}, 1, "85.5");
    m_checks.publishMetric({"shop", "web", "name"}, 3, "text", "", "off", "");
    m_checks.publish({"shop", "db"}, 2);
    ASSERT_FALSE(m_applications.listen(QHostAddress(QHostAddress::LocalHost), 0));
    QTcpSocket application;
    application.connectToHost(QHostAddress(QHostAddress::LocalHost),
                              m_applications.address().section(QLatin1Char(':'), -1).toUShort());
    ASSERT_TRUE(support::runUntil([&] { return !m_applications.applications().empty(); }));
    QFile file(QStringLiteral(VIGIL_SOURCE_DIR "/docs/checks.schema.json"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QJsonObject schema = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonObject document = json("/api/checks");
    EXPECT_EQ(document[QLatin1String("applications")].toArray().size(), 1);
    expectValid(document, schema, schema[QLatin1String("$defs")].toObject(), QStringLiteral("document"));
}

TEST_F(HttpPagesTest, AStaleCheckSaysSo)
{
    m_checks.publish({"shop", "web"}, 0);
    EXPECT_FALSE(check(0)[QLatin1String("stale")].toBool());
    m_checks.clock.advance(support::PublishedChecks::staleMs);
    EXPECT_TRUE(check(0)[QLatin1String("stale")].toBool());
    EXPECT_EQ(text(check(0), "status"), QStringLiteral("unknown"));
}

TEST_F(HttpPagesTest, AMutedCheckSaysUntilWhen)
{
    m_checks.publish({"shop", "web"}, 0);
    EXPECT_TRUE(check(0)[QLatin1String("mutedUntil")].isNull());
    EXPECT_FALSE(m_checks.mutes.mute(support::PublishedChecks::indexOf({"shop", "web"}), 3'600'000));
    EXPECT_EQ(text(check(0), "mutedUntil"), m_checks.clock.nowUtc().addSecs(3600).toString(Qt::ISODate));
}

TEST_F(HttpPagesTest, HostileTextsStayTexts)
{
    const std::string hostile = "</script><img src=x onerror=\"alert(1)\">\\\",\n{}";
    m_checks.publish({hostile, "\xff\xfe"}, 2, hostile);
    m_checks.publishMetric({hostile, "\xff\xfe", hostile}, 2, hostile, hostile, hostile, hostile);
    EXPECT_FALSE(get("/api/checks").text.contains("<img"));
    QString expected = QString::fromStdString(hostile);
    expected.replace(QLatin1Char('\n'), QChar(QChar::ReplacementCharacter));
    EXPECT_EQ(text(check(0), "summary"), expected);
    EXPECT_EQ(check(0)[QLatin1String("metrics")].toArray().size(), 1);
}

TEST_F(HttpPagesTest, ChecksRemovedMeanwhileAreLeftOut)
{
    for (int number = 0; number < 10; ++number) {
        m_checks.publish({"a", std::to_string(number)}, 0);
        m_checks.publishMetric({"a", std::to_string(number), "m"}, 0, "1");
    }
    HttpReply reply = m_pages.replyTo({"/api/checks", {}});
    for (int piece = 0; piece < 8; ++piece)
        reply.pieces->appendTo(reply.text);
    for (int number = 0; number < 10; ++number) {
        m_checks.remove({"a", std::to_string(number), "m"});
        m_checks.remove({"a", std::to_string(number)});
    }
    while (reply.pieces->appendTo(reply.text)) {
    }
    EXPECT_FALSE(QJsonDocument::fromJson(reply.text).isNull()) << reply.text.constData();
}

TEST_F(HttpPagesTest, HealthFailsWhenSomethingIsCritical)
{
    m_checks.publish({"a", "b"}, 1);
    EXPECT_EQ(get("/health").status, 200);
    m_checks.publish({"a", "c"}, 2);
    EXPECT_EQ(get("/health").status, 503);
    const QJsonObject health = json("/health");
    EXPECT_EQ(text(health, "status"), QStringLiteral("critical"));
    EXPECT_EQ(health[QLatin1String("severity")].toInt(), 3);
    EXPECT_EQ(health[QLatin1String("counts")].toObject()[QLatin1String("warning")].toInt(), 1);
}

TEST_F(HttpPagesTest, HistoryIsThatOfOneCheck)
{
    m_checks.publish({"a", "b"}, 0);
    m_checks.publishMetric({"a", "b", "m"}, 0, "12.5");
    m_history.start();
    m_checks.clock.advance(100);
    const QJsonObject history = json("/api/history/1");
    EXPECT_EQ(history[QLatin1String("seconds")].toInt(), 20);
    const QJsonArray values = history[QLatin1String("metrics")].toObject()[QLatin1String("1")].toArray();
    ASSERT_EQ(values.size(), agent::History::samples);
    EXPECT_EQ(values.last().toDouble(), 12.5);
    EXPECT_TRUE(values.first().isNull());
}
