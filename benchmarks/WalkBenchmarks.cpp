// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// What managers wait for, beside a plain snmpd that has the same cells in its configuration.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <string>

#include "benchmarks/Clocks.h"
#include "benchmarks/Figures.h"
#include "benchmarks/Publisher.h"
#include "benchmarks/RunningAgent.h"
#include "benchmarks/RunningSnmpd.h"
#include "benchmarks/SnmpManager.h"

namespace {

constexpr int getsOfRound = 500;

std::string overrides(int cells)
{
    std::string lines;
    for (int number = 0; number < cells; ++number)
        lines += "override ." + Publisher::enterprise() + Publisher::cell(number) + " octet_str \"" +
                 Publisher::text(number) + "\"\n";
    return lines;
}

void waitForCells(SnmpManager& manager, int cells)
{
    while (manager.get(Publisher::oid(cells - 1)) != Publisher::text(cells - 1))
        usleep(10000);
}

/// Adds the duration of a walk in microseconds a cell. False if it does not find all cells.
bool walk(SnmpManager& manager, int cells, const std::string& figure)
{
    StopWatch wall(CLOCK_MONOTONIC);
    wall.start();
    const int found = manager.walk(vigil::Oid({1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4}));
    wall.stop();
    figures::add(figure, wall.total() / 1e3 / cells);
    return found == cells;
}

/// The same, and the processor time of the program that answers.
bool walk(SnmpManager& manager, const RunningProgram& program, int cells, const std::string& figure)
{
    const double before = program.processorNanoseconds();
    const bool isComplete = walk(manager, cells, figure + " us a cell");
    figures::add(figure + " cpu us a cell", (program.processorNanoseconds() - before) / 1e3 / cells);
    return isComplete;
}

void gets(SnmpManager& manager, const std::string& figure)
{
    const vigil::Oid id = Publisher::oid(1);
    StopWatch wall(CLOCK_MONOTONIC);
    wall.start();
    for (int i = 0; i < getsOfRound; ++i)
        manager.get(id);
    wall.stop();
    figures::add(figure, wall.total() / 1e3 / getsOfRound);
}

void walkBesideSnmpd(benchmark::State& state)
{
    const auto cells = static_cast<int>(state.range(0));
    const RunningSnmpd plain(overrides(cells));
    const RunningSnmpd master;
    const RunningAgent subagent(master.agentxAddress());
    const RunningAgent standalone;
    const Publisher behindMaster(subagent.applicationPort(), cells);
    const Publisher alone(standalone.applicationPort(), cells);
    SnmpManager ofPlain(plain.snmpAddress(), "public");
    SnmpManager ofMaster(master.snmpAddress(), "public");
    SnmpManager ofStandalone(standalone.snmpAddress(), "public");
    waitForCells(ofMaster, cells);
    waitForCells(ofStandalone, cells);
    for (auto round : state) {
        if (!walk(ofPlain, plain, cells, "plain snmpd walk") ||
            !walk(ofStandalone, standalone, cells, "standalone walk") ||
            !walk(ofMaster, subagent, cells, "subagent walk"))
            return state.SkipWithError("a walk is not complete");
        gets(ofPlain, "plain snmpd GET us");
        gets(ofStandalone, "standalone GET us");
        gets(ofMaster, "subagent GET us");
    }
    state.counters["plain us/cell"] = figures::median("plain snmpd walk us a cell");
    state.counters["standalone us/cell"] = figures::median("standalone walk us a cell");
    state.counters["subagent us/cell"] = figures::median("subagent walk us a cell");
}

/// Without plain snmpd: the time it takes to read its configuration grows with the square of the cells.
void longWalk(benchmark::State& state)
{
    const auto cells = static_cast<int>(state.range(0));
    const RunningSnmpd master;
    const RunningAgent subagent(master.agentxAddress());
    const RunningAgent standalone;
    const Publisher behindMaster(subagent.applicationPort(), cells);
    const Publisher alone(standalone.applicationPort(), cells);
    SnmpManager ofMaster(master.snmpAddress(), "public");
    SnmpManager ofStandalone(standalone.snmpAddress(), "public");
    waitForCells(ofMaster, cells);
    waitForCells(ofStandalone, cells);
    for (auto round : state) {
        if (!walk(ofStandalone, standalone, cells, "standalone long walk") ||
            !walk(ofMaster, subagent, cells, "subagent long walk"))
            return state.SkipWithError("a walk is not complete");
    }
    state.counters["standalone us/cell"] = figures::median("standalone long walk us a cell");
    state.counters["subagent us/cell"] = figures::median("subagent long walk us a cell");
}

} // namespace

BENCHMARK(walkBesideSnmpd)->Arg(10000)->Iterations(10)->UseRealTime();
BENCHMARK(longWalk)->Arg(100000)->Iterations(3)->UseRealTime();
