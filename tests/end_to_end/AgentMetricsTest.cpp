// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// What Prometheus's own checker says about /metrics.

#include <gtest/gtest.h>

#include <QProcess>
#include <QStandardPaths>

#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/HttpClient.h"

using support::AgentProcess;
using support::FakeApplication;
using support::HttpClient;

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
        metrics = HttpClient(port).request("GET /metrics HTTP/1.0\r\nHost: localhost\r\n\r\n");
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
