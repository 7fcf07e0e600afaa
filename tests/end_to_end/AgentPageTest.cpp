// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent's page in a real browser.

#include <gtest/gtest.h>

#include <QLocalSocket>
#include <QTemporaryDir>

#include <memory>

#include "support/AgentProcess.h"
#include "support/Browser.h"
#include "support/FakeApplication.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::Browser;
using support::FakeApplication;
using support::runUntil;
using support::SnmpTool;

namespace {

const std::string tables = "127.3.1.200.4.";

std::string row(unsigned int table, unsigned int column, const std::vector<std::string>& keys)
{
    std::string oid = tables + std::to_string(table) + ".1." + std::to_string(column);
    for (const std::string& key : keys) {
        oid += '.' + std::to_string(key.size());
        for (const char octet : key)
            oid += '.' + std::to_string(static_cast<unsigned char>(octet));
    }
    return oid;
}

} // namespace

class AgentPage : public testing::Test
{
protected:
    void SetUp() override
    {
        if (Browser::program().isEmpty())
            GTEST_SKIP() << "Chromium is not installed";
        m_agent = std::make_unique<AgentProcess>(QStringList{QStringLiteral("--http"),
                                                             QStringLiteral("127.0.0.1:%1").arg(m_port),
                                                             QStringLiteral("--control"), control()});
        ASSERT_TRUE(m_agent->start()) << m_agent->log().constData();
        m_application = std::make_unique<FakeApplication>(m_agent->applicationPort());
        ASSERT_TRUE(m_browser.start()) << m_browser.log().constData();
        m_browser.setSize(1000, 800);
    }

    void publish(const std::string& key, int status, const std::string& summary = "text")
    {
        m_application->publish(row(1, 3, {"shop", key}), status);
        m_application->publish(row(1, 4, {"shop", key}), summary);
    }

    void publishMetric(const std::string& key, const std::string& metric, const std::string& value)
    {
        m_application->publish(row(3, 1, {"shop", key, metric}), 0);
        m_application->publish(row(4, 2, {"shop", key, metric}), value);
        m_application->publish(row(4, 3, {"shop", key, metric}), std::string("%"));
        m_application->publish(row(4, 4, {"shop", key, metric}), std::string("~:80"));
        m_application->publish(row(4, 5, {"shop", key, metric}), std::string("~:90"));
    }

    void openPage(int checks)
    {
        m_browser.open(QStringLiteral("http://127.0.0.1:%1/").arg(m_port));
        ASSERT_TRUE(m_browser.waitFor(
            QStringLiteral("document.querySelectorAll('#checks details').length === %1").arg(checks)))
            << m_browser.log().constData();
    }

    QString text(const QString& selector)
    {
        return m_browser.evaluate(QStringLiteral("document.querySelector('%1').textContent").arg(selector))
            .toString();
    }

    QString style(const QString& selector, const QString& property)
    {
        return m_browser
            .evaluate(
                QStringLiteral("getComputedStyle(document.querySelector('%1')).%2").arg(selector, property))
            .toString();
    }

    int polls() { return m_browser.evaluate(polled).toInt(); }

    /// The page itself notes the number of polls until this holds: it polls on while the test waits.
    void notePollsUntil(const QString& condition)
    {
        m_browser.evaluate(
            QStringLiteral(
                "new MutationObserver(() => { if (%1) window.pollsUntil = window.pollsUntil || %2; })"
                ".observe(document.getElementById('checks'),"
                " {subtree: true, childList: true, characterData: true}) && 0")
                .arg(condition, polled));
    }

    QString control() const { return m_directory.filePath(QStringLiteral("control")); }

    const QString polled = QStringLiteral("performance.getEntriesByType('resource')"
                                          ".filter(each => each.name.endsWith('/api/checks')).length");
    const QTemporaryDir m_directory;
    const quint16 m_port = AgentProcess::freePort();
    std::unique_ptr<AgentProcess> m_agent;
    std::unique_ptr<FakeApplication> m_application;
    Browser m_browser;
};

TEST_F(AgentPage, ShowsTheWorstCheckFirst)
{
    publish("db", 0, "fine");
    publish("web", 2, "no answer");
    publish("queue", 1, "long");
    publishMetric("web", "load", "85.5");
    openPage(3);
    EXPECT_EQ(text(QStringLiteral("#checks details:nth-child(1) .name")), QStringLiteral("shop/web"));
    EXPECT_EQ(text(QStringLiteral("#checks details:nth-child(1) .pill")), QStringLiteral("critical"));
    EXPECT_EQ(text(QStringLiteral("#checks details:nth-child(1) .says")), QStringLiteral("no answer"));
    EXPECT_EQ(text(QStringLiteral("#checks details:nth-child(2) .name")), QStringLiteral("shop/queue"));
    EXPECT_EQ(text(QStringLiteral("#checks details:nth-child(3) .name")), QStringLiteral("shop/db"));
    EXPECT_EQ(text(QStringLiteral("#checks td.number")), QStringLiteral("85.5%"));
    EXPECT_EQ(text(QStringLiteral("#applications .pill")), QStringLiteral("connected"));
    EXPECT_EQ(text(QStringLiteral("#worst")), QStringLiteral("critical"));
    EXPECT_EQ(style(QStringLiteral("#worst"), QStringLiteral("color")), QStringLiteral("rgb(196, 22, 28)"));
    EXPECT_TRUE(m_browser.evaluate(QStringLiteral("document.title"))
                    .toString()
                    .startsWith(QStringLiteral("CRITICAL (2) ")));
    EXPECT_GT(m_browser.keepScreenshot(QStringLiteral("light")), 10'000);
}

TEST_F(AgentPage, FollowsAChangeWithoutBeingLoadedAgain)
{
    publish("web", 0);
    openPage(1);
    notePollsUntil(QStringLiteral("document.querySelector('#checks .pill')?.textContent === 'critical'"));
    publish("web", 2, "no answer");
    ASSERT_TRUE(SnmpTool(m_agent->udpAddress())
                    .waitFor(QStringLiteral("VIGIL-MIB::vigilHealthCheckStatus.\"shop\".\"web\""),
                             QStringLiteral("2")));
    const int before = polls();
    ASSERT_TRUE(m_browser.waitFor(QStringLiteral("window.pollsUntil !== undefined")));
    EXPECT_LE(m_browser.evaluate(QStringLiteral("window.pollsUntil")).toInt() - before, 2)
        << "polls of one second each";
    EXPECT_EQ(style(QStringLiteral("#checks .pill"), QStringLiteral("color")),
              QStringLiteral("rgb(196, 22, 28)"));
    m_application->unset(row(1, 3, {"shop", "web"}));
    EXPECT_TRUE(m_browser.waitFor(QStringLiteral("!document.querySelector('#checks details')")));
}

/// The table kept the last metric of a check for good.
TEST_F(AgentPage, AMetricLeavesItsCheckEvenIfItIsTheLast)
{
    publish("web", 2, "no answer");
    publishMetric("web", "load", "85.5");
    openPage(1);
    ASSERT_TRUE(m_browser.waitFor(QStringLiteral("document.querySelector('#checks td.number') !== null")));
    m_application->unset(row(3, 1, {"shop", "web", "load"}));
    EXPECT_TRUE(m_browser.waitFor(QStringLiteral("document.querySelector('#checks td.number') === null")));
}

TEST_F(AgentPage, AHostWithoutChecksIsNotWell)
{
    openPage(0);
    EXPECT_TRUE(m_browser.waitFor(QStringLiteral("document.title.startsWith('UNKNOWN ')")))
        << m_browser.evaluate(QStringLiteral("document.title")).toString().toStdString();
}

TEST_F(AgentPage, MarksAMutedCheck)
{
    publish("web", 2, "no answer");
    openPage(1);
    EXPECT_TRUE(
        m_browser.evaluate(QStringLiteral("document.querySelector('#checks .flag').hidden")).toBool());
    QLocalSocket operators;
    operators.connectToServer(control());
    operators.write("{\"command\":\"mute\",\"check\":1,\"name\":\"shop/web\",\"seconds\":3600}\n");
    ASSERT_TRUE(runUntil([&] { return operators.state() == QLocalSocket::UnconnectedState; }));
    EXPECT_TRUE(m_browser.waitFor(
        QStringLiteral("document.querySelector('#checks .flag').textContent.startsWith('muted until ')")));
    EXPECT_FALSE(
        m_browser.evaluate(QStringLiteral("document.querySelector('#checks .flag').hidden")).toBool());
}

TEST_F(AgentPage, IsDarkWhereTheSystemIs)
{
    publish("web", 2);
    openPage(1);
    EXPECT_EQ(style(QStringLiteral("body"), QStringLiteral("backgroundColor")),
              QStringLiteral("rgb(246, 247, 249)"));
    m_browser.setDark(true);
    EXPECT_EQ(style(QStringLiteral("body"), QStringLiteral("backgroundColor")),
              QStringLiteral("rgb(20, 23, 27)"));
    EXPECT_EQ(style(QStringLiteral("#worst"), QStringLiteral("color")), QStringLiteral("rgb(255, 123, 120)"));
    EXPECT_GT(m_browser.keepScreenshot(QStringLiteral("dark")), 5'000);
}

TEST_F(AgentPage, FitsIntoANarrowWindow)
{
    publish("web", 2, std::string(300, 'x') + " a summary without blanks at first");
    publishMetric("web", "a metric with a long name that does not end soon", "123456789.5");
    m_browser.setSize(400, 800);
    openPage(1);
    EXPECT_LE(m_browser.evaluate(QStringLiteral("document.documentElement.scrollWidth")).toInt(), 400);
    EXPECT_GT(m_browser.keepScreenshot(QStringLiteral("narrow")), 5'000);
}

TEST_F(AgentPage, IsUsableByKeyboard)
{
    publish("db", 0);
    publish("web", 0);
    openPage(2);
    m_browser.press(QStringLiteral("/"));
    EXPECT_EQ(m_browser.evaluate(QStringLiteral("document.activeElement.id")).toString(),
              QStringLiteral("search"));
    for (const char* key : {"w", "e", "b"})
        m_browser.press(QLatin1String(key));
    EXPECT_EQ(
        m_browser.evaluate(QStringLiteral("document.querySelectorAll('#checks details').length")).toInt(), 1);
    m_browser.press(QStringLiteral("Tab"));
    m_browser.press(QStringLiteral("Enter"));
    EXPECT_TRUE(
        m_browser.evaluate(QStringLiteral("document.querySelector('#checks details').open")).toBool());
}

TEST_F(AgentPage, HostileTextsDoNoHarm)
{
    const std::string hostile =
        "<img src=x onerror=\"document.title='hacked'\"></script><script>alert(1)</script>";
    publish("<b>web", 2, hostile);
    publishMetric("<b>web", "<i>load", "<u>1");
    openPage(1);
    EXPECT_EQ(text(QStringLiteral("#checks .says")).toStdString(), hostile);
    EXPECT_EQ(text(QStringLiteral("#checks .name")), QStringLiteral("shop/<b>web"));
    EXPECT_EQ(m_browser.evaluate(QStringLiteral("document.querySelectorAll('img, b, i, u').length")).toInt(),
              0);
    EXPECT_TRUE(m_browser.evaluate(QStringLiteral("document.title"))
                    .toString()
                    .startsWith(QStringLiteral("CRITICAL")));
}

TEST_F(AgentPage, SaysWhenTheAgentIsGone)
{
    publish("web", 0);
    openPage(1);
    EXPECT_TRUE(m_browser.evaluate(QStringLiteral("document.getElementById('gone').hidden")).toBool());
    ASSERT_TRUE(m_agent->kill());
    ASSERT_TRUE(m_browser.waitFor(QStringLiteral("!document.getElementById('gone').hidden")));
    EXPECT_TRUE(text(QStringLiteral("#gone")).startsWith(QStringLiteral("The agent has not answered for ")));
    EXPECT_TRUE(m_browser.evaluate(QStringLiteral("document.title.startsWith('NO ANSWER ')")).toBool());
    EXPECT_GT(m_browser.keepScreenshot(QStringLiteral("gone")), 5'000);
    ASSERT_TRUE(m_agent->start());
    EXPECT_TRUE(m_browser.waitFor(QStringLiteral("document.getElementById('gone').hidden")));
}

/// With many checks the page asks seldom. It took its own pause for the agent's silence.
TEST_F(AgentPage, OnlyAnOpenQuestionShowsThatTheAgentIsGone)
{
    publish("web", 0);
    openPage(1);
    const auto isGone = [this](const char* askedAt) {
        return m_browser
            .evaluate(QStringLiteral("answeredAt = Date.now() - 60000; askedAt = %1; showState(); "
                                     "!document.getElementById('gone').hidden")
                          .arg(QLatin1String(askedAt)))
            .toBool();
    };
    EXPECT_FALSE(isGone("null"));
    EXPECT_TRUE(isGone("Date.now() - 60000"));
}

TEST_F(AgentPage, AForeignSiteReadsNothing)
{
    publish("web", 2);
    openPage(1);
    // A page without an origin of its own is foreign to the agent.
    m_browser.open(QStringLiteral("data:text/html,<title>foreign</title>"));
    ASSERT_TRUE(m_browser.waitFor(QStringLiteral("document.title === 'foreign'")));
    m_browser.evaluate(
        QStringLiteral("fetch('http://127.0.0.1:%1/api/checks').then(() => document.title = 'read', "
                       "() => document.title = 'refused')")
            .arg(m_port));
    ASSERT_TRUE(m_browser.waitFor(QStringLiteral("document.title !== 'foreign'")));
    EXPECT_EQ(m_browser.evaluate(QStringLiteral("document.title")).toString(), QStringLiteral("refused"));
}
