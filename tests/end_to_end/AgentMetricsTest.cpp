// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// /metrics as a whole: what Prometheus's own checker says about it, and the figures about the agent itself.

#include <gtest/gtest.h>

#include <QProcess>
#include <QStandardPaths>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/HttpClient.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::FakeApplication;
using support::HttpClient;

namespace {

QByteArray metricsAt(quint16 port)
{
    return HttpClient(port).request("GET /metrics HTTP/1.0\r\nHost: localhost\r\n\r\n");
}

/// -1 if there is no such sample.
double figureIn(const QByteArray& metrics, const QByteArray& name)
{
    const int begin = metrics.indexOf('\n' + name + ' ') + name.size() + 2;
    return begin < name.size() + 2 ? -1 : metrics.mid(begin, metrics.indexOf('\n', begin) - begin).toDouble();
}

} // namespace

TEST(AgentMetrics, PromtoolFindsNothing)
{
    const QString promtool = QStandardPaths::findExecutable(QStringLiteral("promtool"));
    if (promtool.isEmpty())
        GTEST_SKIP() << "promtool is not installed";
    const quint16 port = AgentProcess::freePort();
    AgentProcess agent({QStringLiteral("--http"), QStringLiteral("127.0.0.1:%1").arg(port)});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    FakeApplication application(agent.applicationPort());
    application.publish("127.3.1.200.4.1.1.3.1.97.1.34", 2); // the second key is a quote
    application.publish("127.3.1.200.4.3.1.1.1.97.1.34.1.92", 1);
    application.publish("127.3.1.200.4.4.1.2.1.97.1.34.1.92", std::string("12.5"));
    application.publish("127.3.1.200.4.4.1.4.1.97.1.34.1.92", std::string("1:10"));
    QByteArray metrics;
    ASSERT_TRUE(support::askUntil([&] {
        metrics = metricsAt(port);
        return metrics.contains("\nvigil_metric_bound{");
    }));
    QProcess checker;
    checker.start(promtool, {QStringLiteral("check"), QStringLiteral("metrics")});
    checker.write(metrics.mid(metrics.indexOf("\r\n\r\n") + 4));
    checker.closeWriteChannel();
    ASSERT_TRUE(checker.waitForFinished(support::deadlineMs));
    EXPECT_EQ(checker.exitCode(), 0);
    EXPECT_EQ(checker.readAllStandardError().toStdString(), "");
}

// /metrics left them out, so the memory never came near its limit there.
TEST(AgentMetrics, TheMemoryIncludesWaitingNotifications)
{
    support::SnmpdProcess snmpd; // not started, so notifications wait
    const quint16 port = AgentProcess::freePort();
    AgentProcess agent(snmpd.agentxAddress(),
                       {QStringLiteral("--http"), QStringLiteral("127.0.0.1:%1").arg(port)});
    ASSERT_TRUE(agent.start()) << agent.log().constData();
    FakeApplication application(agent.applicationPort());
    for (const char* check : {"1.97.1.49", "1.97.1.50", "1.97.1.51", "1.97.1.52", "1.97.1.53"}) {
        application.publish(std::string("127.3.1.200.4.1.1.3.") + check, 2);
        application.publish(std::string("127.3.1.200.4.1.1.4.") + check, std::string("down"));
    }
    const double fiveNotifications = 5 * 6000; // the cells take less than half of this
    EXPECT_TRUE(support::askUntil(
        [&] { return figureIn(metricsAt(port), "vigil_agent_memory_bytes") > fiveNotifications; }));
}
