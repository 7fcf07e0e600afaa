// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Many applications at once: a fraction of the load the agent is made for, or all of it with the environment
// variable VIGIL_LOAD=full.

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include <iostream>

#include "support/AgentProcess.h"
#include "support/EnterpriseId.h"
#include "support/FakeApplication.h"
#include "support/Load.h"
#include "support/ProcessMemory.h"
#include "support/RunUntil.h"
#include "support/SnmpTool.h"

using support::AgentProcess;
using support::enterprise;
using support::FakeApplication;
using support::SnmpTool;

namespace {

struct Load
{
    int applications;
    int cells; // of each application
    int rounds;
};

Load chosenLoad()
{
    return support::isFullLoad() ? Load{200, 500, 30} : Load{20, 100, 8};
}

class AgentLoad : public testing::Test
{
protected:
    void SetUp() override
    {
        // Address sanitizer keeps freed memory in quarantine, which looks like growth.
        qputenv("ASAN_OPTIONS", "quarantine_size_mb=1");
        ASSERT_TRUE(agent.start()) << agent.log().constData();
        tool = std::make_unique<SnmpTool>(agent.tcpAddress());
        for (int i = 0; i < load.applications; ++i)
            applications.push_back(std::make_unique<FakeApplication>(agent.applicationPort()));
        applications[0]->publish("8.1",
                                 0); // after all others: a walk past the last cell prints one more line
    }

    /// All cells of all applications get the number of the round as their value, the marks last.
    void publish(int round)
    {
        for (int application = 0; application < load.applications; ++application) {
            FakeApplication& sender = *applications[static_cast<size_t>(application)];
            const std::string number = std::to_string(application);
            for (int cell = 0; cell < load.cells; ++cell)
                sender.publish("6." + number + "." + std::to_string(cell), round);
            sender.publish("7." + number, round);
        }
    }

    QStringList walk(const QString& tree) const
    {
        return tool
            ->run(QStringLiteral("snmpbulkwalk"), {enterprise + tree},
                  {QStringLiteral("-OqnUe"), QStringLiteral("-Cr50")})
            .out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    /// Waits until the agent serves all values of the round.
    bool waitForMarks(int round) const
    {
        const QString value = QStringLiteral(" %1").arg(round);
        return support::runUntil(
            [&] {
                const QStringList marks = walk(QStringLiteral(".7"));
                return marks.size() == load.applications &&
                       std::all_of(marks.begin(), marks.end(),
                                   [&](const QString& mark) { return mark.endsWith(value); });
            },
            60'000);
    }

    /// Every cell is there, sorted, with the value of this round or of the previous one.
    void expectWhole(const QStringList& lines, int round) const
    {
        ASSERT_EQ(lines.size(), load.applications * load.cells);
        for (int i = 0; i < lines.size(); ++i) {
            const QString id =
                QStringLiteral("%1.6.%2.%3 ").arg(enterprise).arg(i / load.cells).arg(i % load.cells);
            ASSERT_TRUE(lines[i].startsWith(id)) << qPrintable(lines[i]);
            const int value = lines[i].mid(id.size()).toInt();
            ASSERT_TRUE(value == round || value == round - 1) << round << ": " << qPrintable(lines[i]);
        }
    }

    const Load load = chosenLoad();
    AgentProcess agent{QStringList()};
    std::unique_ptr<SnmpTool> tool;
    std::vector<std::unique_ptr<FakeApplication>> applications;
};

} // namespace

TEST_F(AgentLoad, ManyApplicationsUpdateWhileAManagerWalks)
{
    publish(1);
    ASSERT_TRUE(waitForMarks(1));
    constexpr int settledRound = 3;
    std::optional<qint64> settledMemory;
    qint64 slowestWalkMs = 0;
    QElapsedTimer timer;
    for (int round = 2; round <= load.rounds; ++round) {
        publish(round); // and the walk meets the updates on their way
        timer.start();
        const QStringList lines = walk(QStringLiteral(".6"));
        slowestWalkMs = std::max(slowestWalkMs, timer.elapsed());
        expectWhole(lines, round);
        ASSERT_TRUE(waitForMarks(round)) << round;
        if (round == settledRound)
            settledMemory = support::residentKilobytes(agent.processId());
    }
    for (const auto& application : applications)
        EXPECT_TRUE(application->isConnected());
    EXPECT_EQ(agent.log().count("warning"), 0) << agent.log().constData();

    const std::optional<qint64> memory = support::residentKilobytes(agent.processId());
    std::cout << load.applications << " applications, " << load.cells << " cells each, " << load.rounds
              << " rounds: slowest walk " << slowestWalkMs << " ms, memory " << settledMemory.value_or(0)
              << " kB after round " << settledRound << ", " << memory.value_or(0) << " kB at the end\n";
    if (memory && settledMemory) {
        constexpr qint64 noise = 2048;
        EXPECT_LE(*memory, *settledMemory + *settledMemory / 20 + noise);
    }
}
