// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The library with a real agent and a manager.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <memory>

#include "benchmarks/Clocks.h"
#include "benchmarks/Figures.h"
#include "benchmarks/RunningAgent.h"
#include "benchmarks/SampleCheck.h"
#include "benchmarks/SnmpManager.h"

namespace {

/// Accepts every range at once.
class AcceptingHandler : public RangeChangeHandler
{
public:
    bool acceptRangeChange(vigil::ScalarMetric*, RangeKind, const vigil::Range&) override { return true; }
    void rangeChanged(vigil::ScalarMetric*, RangeKind) override {}
};

/// An agent with one application: this process.
struct Served
{
    explicit Served(int metrics) : manager(agent.snmpAddress(), "private")
    {
        setenv("VIGIL_SERVICE_PORT", std::to_string(agent.applicationPort()).c_str(), 1);
        check = std::make_unique<SampleCheck>(metrics);
        updateAndWait();
    }

    /// Until a GET reads the last value.
    void updateAndWait()
    {
        check->update();
        const vigil::Oid cell = check->lastValueCell();
        const std::string expected = std::to_string(static_cast<int>(check->value()));
        while (manager.get(cell) != expected)
            usleep(1000);
    }

    RunningAgent agent;
    SnmpManager manager;
    std::unique_ptr<SampleCheck> check;
};

void updateToGet(benchmark::State& state)
{
    Served served(1000);
    for (auto round : state) {
        StopWatch wall(CLOCK_MONOTONIC);
        const double before = served.agent.processorNanoseconds();
        wall.start();
        served.updateAndWait();
        wall.stop();
        const double spent = served.agent.processorNanoseconds() - before;
        figures::add("update to GET ms", wall.total() / 1e6);
        figures::add("agent us a cell", spent / 1e3 / served.check->cellsOfUpdate());
        usleep(50000);
    }
    state.counters["median ms"] = figures::median("update to GET ms");
    state.counters["agent us/cell"] = figures::median("agent us a cell");
}

void setAfterSet(benchmark::State& state)
{
    Served served(2);
    AcceptingHandler handler;
    for (int i : {0, 1})
        served.check->metric(i).setRangeChangeHandler(&handler);
    int limit = 0;
    for (auto round : state) {
        for (int i : {0, 1}) { // the second one starts when the first has been answered
            StopWatch wall(CLOCK_MONOTONIC);
            wall.start();
            if (!served.manager.set(served.check->warningRangeCell(i), std::to_string(++limit)))
                return state.SkipWithError("a SET was refused");
            wall.stop();
            figures::add(i == 0 ? "first SET ms" : "second SET ms", wall.total() / 1e6);
        }
    }
    for (int i : {0, 1})
        served.check->metric(i).clearRangeChangeHandler();
    state.counters["second ms"] = figures::median("second SET ms");
}

} // namespace

BENCHMARK(updateToGet)->Iterations(15)->UseRealTime();
BENCHMARK(setAfterSet)->Iterations(50)->UseRealTime();
