// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Three rounds of crashes, or a hundred with VIGIL_LOAD=full. VIGIL_SEED repeats a run.

#include <gtest/gtest.h>

#include <QTimer>

#include <algorithm>
#include <array>
#include <iostream>
#include <random>

#include "support/AgentProcess.h"
#include "support/ApplicationProcess.h"
#include "support/EnterpriseId.h"
#include "support/Load.h"
#include "support/LoadFreeTimer.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"
#include "support/SnmpdProcess.h"

using support::AgentProcess;
using support::ApplicationProcess;
using support::enterprise;
using support::SnmpdProcess;
using support::SnmpTool;

namespace {

constexpr qint64 recoveryLimitMs = 7000;

int chosenRounds()
{
    return support::isFullLoad() ? 100 : 3;
}

unsigned int chosenSeed()
{
    bool isNumber = false;
    const unsigned int seed = qEnvironmentVariable("VIGIL_SEED").toUInt(&isNumber);
    return isNumber ? seed : std::random_device()();
}

/// The agent, snmpd and one application crash and return. Another application lives and publishes all the
/// time.
class LongRun : public testing::Test
{
protected:
    enum class Part { Snmpd, Agent, Application };

    void SetUp() override
    {
        std::cout << "VIGIL_SEED=" << seed << std::endl;
        for (const Part part : parts)
            ASSERT_TRUE(start(part));
        ASSERT_TRUE(steady.start());
        steady.publish(++steadyValue);
        QObject::connect(&tick, &QTimer::timeout, &tick, [this] { steady.publish(++steadyValue); });
        tick.start(100);
    }

    bool start(Part part)
    {
        switch (part) {
        case Part::Snmpd:
            return snmpd.start();
        case Part::Agent:
            return agent.start();
        case Part::Application:
            if (!mortal.start())
                return false;
            mortal.publish(++mortalValue);
            return true;
        }
        return false;
    }

    bool kill(Part part)
    {
        switch (part) {
        case Part::Snmpd:
            return snmpd.kill();
        case Part::Agent:
            return agent.kill();
        case Part::Application:
            return mortal.kill();
        }
        return false;
    }

    /// Kills all parts in one random order and starts them in another.
    void crashAll()
    {
        std::shuffle(parts.begin(), parts.end(), random);
        for (const Part part : parts) {
            ASSERT_TRUE(kill(part));
            pause();
        }
        std::shuffle(parts.begin(), parts.end(), random);
        for (const Part part : parts) {
            pause();
            ASSERT_TRUE(start(part)) << "part " << static_cast<int>(part) << '\n'
                                     << agent.log().constData() << snmpd.log().constData();
        }
    }

    /// Long enough for the others to notice, or not.
    void pause()
    {
        QEventLoop loop;
        QTimer::singleShot(static_cast<int>(random() % 300), &loop, &QEventLoop::quit);
        loop.exec();
    }

    /// What a manager reads, with names in place of the values that change.
    QStringList shownCells() const
    {
        QStringList lines = SnmpTool(snmpd.udpAddress()).walk(enterprise + QStringLiteral(".127.3.1.200.4"));
        lines.replaceInStrings(QString::number(mortalValue), QStringLiteral("MORTAL"));
        lines.replaceInStrings(QString::number(steadyValue), QStringLiteral("STEADY"));
        return lines;
    }

    /// The value and the result of both applications.
    static bool isServed(const QStringList& cells)
    {
        return cells.filter(QStringLiteral("MORTAL")).size() == 2 &&
               cells.filter(QStringLiteral("STEADY")).size() == 2;
    }

    /// The steady application is silent meanwhile, so that its last value can be read.
    qint64 recover()
    {
        tick.stop();
        const support::LoadFreeTimer elapsed(
            {agent.processId(), snmpd.processId(), mortal.processId(), steady.processId()});
        const QStringList wanted = m_wanted;
        EXPECT_TRUE(support::runUntil([&] { return shownCells() == wanted; }))
            << "expected:\n"
            << qPrintable(wanted.join(QLatin1Char('\n'))) << "\nshown:\n"
            << qPrintable(shownCells().join(QLatin1Char('\n'))) << '\n'
            << agent.log().constData();
        tick.start();
        return elapsed.elapsedMs();
    }

    /// Remembers what a manager reads before the first crash.
    void remember()
    {
        tick.stop();
        EXPECT_TRUE(support::runUntil([this] {
            m_wanted = shownCells();
            return isServed(m_wanted);
        })) << qPrintable(m_wanted.join(QLatin1Char('\n')));
        tick.start();
    }

    const unsigned int seed = chosenSeed();
    std::mt19937 random{seed};
    const quint16 port = AgentProcess::freePort();
    SnmpdProcess snmpd;
    AgentProcess agent{snmpd.agentxAddress(),
                       {QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port)}};
    ApplicationProcess mortal{port, QStringLiteral("mortal")};
    ApplicationProcess steady{port, QStringLiteral("steady")};
    std::array<Part, 3> parts{Part::Snmpd, Part::Agent, Part::Application};
    QTimer tick;
    int mortalValue = 100'000;
    int steadyValue = 500'000;

private:
    QStringList m_wanted;
};

} // namespace

TEST_F(LongRun, ManagersReadWhatTheApplicationsSaidAfterEachRoundOfCrashes)
{
    remember();
    const int rounds = chosenRounds();
    qint64 slowestMs = 0;
    for (int round = 1; round <= rounds && !HasFailure(); ++round) {
        ASSERT_NO_FATAL_FAILURE(crashAll());
        const qint64 recoveryMs = recover();
        EXPECT_LE(recoveryMs, recoveryLimitMs) << "round " << round;
        slowestMs = std::max(slowestMs, recoveryMs);
    }
    std::cout << rounds << " rounds, slowest recovery " << slowestMs << " ms\n";
}
