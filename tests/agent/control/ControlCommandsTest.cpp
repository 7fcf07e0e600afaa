// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include "agent/control/ControlCommands.h"
#include "support/PublishedChecks.h"

using agent::ControlReply;

namespace {

class ControlCommandsTest : public testing::Test
{
protected:
    ControlCommandsTest() { checks.publish({"shop", "web"}, 2); }

    QJsonObject ask(const QByteArray& request)
    {
        const ControlReply reply = commands.replyTo(request, platform::rootUser());
        EXPECT_EQ(reply.text.count('\n'), 1) << reply.text.constData();
        EXPECT_TRUE(reply.text.endsWith('\n'));
        EXPECT_FALSE(reply.pieces);
        return QJsonDocument::fromJson(reply.text).object();
    }

    bool isRefused(const QByteArray& request)
    {
        return !ask(request)[QLatin1String("error")].toString().isEmpty();
    }

    support::PublishedChecks checks;
    agent::ApplicationServer applications{checks.cells, checks.clock, {}};
    agent::ControlCommands commands{
        {checks.list, checks.store, applications, checks.clock}, checks.mutes, checks.cells};
    const agent::ObjectId web = support::PublishedChecks::indexOf({"shop", "web"});
};

} // namespace

TEST_F(ControlCommandsTest, MutesACheck)
{
    const QJsonObject reply =
        ask("{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":7200}");
    const QString until = checks.clock.nowUtc().addSecs(7200).toString(Qt::ISODate);
    EXPECT_EQ(reply[QLatin1String("check")].toInt(), 1);
    EXPECT_EQ(reply[QLatin1String("name")].toString(), QStringLiteral("shop/web"));
    EXPECT_EQ(reply[QLatin1String("mutedUntil")].toString(), until);
    EXPECT_EQ(checks.mutes.untilOf(web), checks.clock.nowUtc().addSecs(7200));
}

TEST_F(ControlCommandsTest, UnmutesACheck)
{
    EXPECT_FALSE(checks.mutes.mute(web, 1000));
    const QJsonObject reply = ask("{\"command\":\"unmute\",\"check\":1,\"name\":\"shop/web\"}");
    EXPECT_TRUE(reply[QLatin1String("mutedUntil")].isNull());
    EXPECT_FALSE(checks.mutes.contains(web));
    EXPECT_TRUE(isRefused("{\"command\":\"unmute\",\"check\":1,\"name\":\"shop/web\"}"));
}

TEST_F(ControlCommandsTest, ForgetsALostApplication)
{
    EXPECT_TRUE(isRefused("{\"command\":\"forget\",\"application\":1}")) << "it is not lost";
    EXPECT_TRUE(checks.cells.lose({1, {}, {}}));
    const QJsonObject reply = ask("{\"command\":\"forget\",\"application\":1}");
    EXPECT_EQ(reply[QLatin1String("application")].toInt(), 1);
    EXPECT_EQ(reply[QLatin1String("cells")].toInt(), 2);
    checks.clock.advance(0);
    EXPECT_EQ(checks.store.size(), 0U);
    EXPECT_TRUE(isRefused("{\"command\":\"forget\",\"application\":1}"));
}

TEST_F(ControlCommandsTest, ChecksAreTheDocument)
{
    const ControlReply reply = commands.replyTo("{\"command\":\"checks\"}", platform::rootUser());
    QByteArray text = reply.text;
    ASSERT_TRUE(reply.pieces);
    while (reply.pieces->appendTo(text)) {
    }
    const QJsonObject document = QJsonDocument::fromJson(text).object();
    EXPECT_EQ(document[QLatin1String("checks")].toArray().size(), 1);
}

// Between the look-up and the request, a number can come to mean another check.
TEST_F(ControlCommandsTest, ANumberWithAnotherNameIsRefused)
{
    EXPECT_TRUE(isRefused("{\"command\":\"mute\",\"check\":1,\"name\":\"shop/db\",\"seconds\":7200}"));
    EXPECT_TRUE(isRefused("{\"command\":\"mute\",\"check\":2,\"name\":\"shop/web\",\"seconds\":7200}"));
    EXPECT_TRUE(checks.mutes.all().empty());
}

TEST_F(ControlCommandsTest, AMeaninglessRequestChangesNothing)
{
    for (const QByteArray line :
         {"", "x", "[]", "{}", "{\"command\":7}", "{\"command\":\"stop\"}", "{\"command\":\"mute\"}",
          "{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\"}",
          "{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":0}",
          "{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":-1}",
          "{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":1.5}",
          "{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":1e300}",
          "{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":31622401}",
          "{\"command\":\"mute\",\"check\":\"1\",\"name\":\"shop/web\",\"seconds\":9}",
          "{\"command\":\"forget\",\"application\":-1}", "{\"command\":\"forget\"}"})
        EXPECT_TRUE(isRefused(line)) << line.constData();
    EXPECT_TRUE(isRefused(QByteArray(8000, '[')));
    EXPECT_TRUE(checks.mutes.all().empty());
    EXPECT_EQ(checks.store.size(), 2U);
}
