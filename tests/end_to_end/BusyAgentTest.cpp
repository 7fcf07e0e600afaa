// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The real agent, busy for a while: all programs are real. VIGIL_LOAD=full takes 10,000 metrics.

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QRegularExpression>

#include <iostream>

#include "lifecycle/HostProcess.h"
#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/Load.h"
#include "support/LoadFreeTimer.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::enterprise;
using support::runUntil;
using support::SnmpTool;

namespace {

const QString health = enterprise + QStringLiteral(".127.3.1.200.4");

int chosenMetrics()
{
    return support::isFullLoad() ? 10000 : 500;
}

/// An agent and an application of its own.
class Side
{
public:
    Side() : m_isStarted(m_agent.start()) {}

    AgentProcess& agent() { return m_agent; }
    HostProcess& application() { return m_application; }

    /// Returns once the application has carried out the command; the agent may learn of it later.
    void say(const QString& command)
    {
        m_application.say(command);
        EXPECT_TRUE(m_application.waitForLine(command));
    }

    /// Those of VIGIL-MIB.
    QStringList cells() const
    {
        return SnmpTool(m_agent.tcpAddress())
            .run(QStringLiteral("snmpbulkwalk"), {health},
                 {QStringLiteral("-OqnUe"), QStringLiteral("-Cr50"), QStringLiteral("-t60")})
            .out.split(QLatin1Char('\n'), Qt::SkipEmptyParts)
            .filter(QRegularExpression(QStringLiteral("^\\Q%1.\\E[^ ]+ ").arg(health)));
    }

    bool waitForLog(const char* text)
    {
        return runUntil([&] { return !m_application.log().filter(QLatin1String(text)).isEmpty(); });
    }

private:
    AgentProcess m_agent{
        {QStringLiteral("--verbose"), QStringLiteral("--max-cells"), QStringLiteral("200000")}};
    const bool m_isStarted;
    HostProcess m_application{QStringLiteral(LARGE_APPLICATION), {}, m_agent.applicationPort()};
};

/// The same application twice, once beside an agent that stops for a while.
class BusyAgent : public testing::Test
{
protected:
    void say(const QString& command)
    {
        m_free.say(command);
        m_busy.say(command);
    }

    /// Stops the busy agent, and returns once its connection takes no more.
    void stall()
    {
        m_busy.agent().suspend();
        say(QStringLiteral("fill"));
        EXPECT_TRUE(m_busy.waitForLog("The service does not read fast enough: further values wait."));
    }

    /// Waits until managers of both agents read the same, and returns the number of cells.
    int expectSameCells()
    {
        QStringList expected;
        QStringList cells;
        EXPECT_TRUE(runUntil([&] {
            expected = m_free.cells();
            cells = m_busy.cells();
            return cells == expected;
        })) << cells.size()
            << " cells, but " << expected.size() << " expected";
        return cells.size();
    }

    const int metrics = chosenMetrics();
    Side m_free;
    Side m_busy;
};

} // namespace

TEST_F(BusyAgent, ServesWhatTheApplicationSaidLastOnceItReadsAgain)
{
    say(QStringLiteral("create %1").arg(metrics / 10));
    say(QStringLiteral("update 1"));
    const int before = expectSameCells();

    QElapsedTimer elapsed;
    elapsed.start();
    stall();
    say(QStringLiteral("create %1").arg(metrics));
    say(QStringLiteral("update 2"));
    say(QStringLiteral("remove %1").arg(metrics / 10));
    say(QStringLiteral("update 3"));
    say(QStringLiteral("destroy"));
    runUntil([&] { return elapsed.hasExpired(2000); });
    m_busy.agent().resume();
    const qint64 stoppedMs = elapsed.elapsed();

    EXPECT_TRUE(m_busy.waitForLog("The service has caught up: all values are sent."));
    const qint64 caughtUpMs = elapsed.elapsed() - stoppedMs;
    const int after = expectSameCells();
    EXPECT_GT(after, before);
    std::cout << "stopped for " << stoppedMs << " ms, all values sent " << caughtUpMs << " ms later, "
              << after << " cells served " << elapsed.elapsed() - stoppedMs << " ms later\n";
}

TEST_F(BusyAgent, SeesACleanShutdownThatBeganWhileItWasBusy)
{
    say(QStringLiteral("create %1").arg(metrics));
    say(QStringLiteral("update 1"));
    expectSameCells();

    stall();
    say(QStringLiteral("update 2"));
    say(QStringLiteral("destroy"));
    m_busy.application().say(QStringLiteral("end"));
    ASSERT_TRUE(m_busy.waitForLog("[VigilSnmp::cleanup] Cleanup."));
    QElapsedTimer elapsed;
    elapsed.start();
    const support::LoadFreeTimer loadFree({m_busy.agent().processId()});
    m_busy.agent().resume();

    EXPECT_EQ(m_busy.application().exitCode(), 0);
    const qint64 agentWaitedMs = elapsed.elapsed() - loadFree.elapsedMs();
    const bool isEmpty = runUntil([&] { return m_busy.cells().isEmpty(); });
    constexpr int maxWaitMs = 500;
    if (!isEmpty && agentWaitedMs > maxWaitMs)
        GTEST_SKIP() << "The application gives the agent 2 seconds; it waited " << agentWaitedMs
                     << " ms for a processor.";
    EXPECT_TRUE(isEmpty);
    EXPECT_EQ(m_busy.agent().stop(), 0);
    EXPECT_EQ(m_busy.agent().log().count("without removing its"), 0) << m_busy.agent().log().constData();
}
