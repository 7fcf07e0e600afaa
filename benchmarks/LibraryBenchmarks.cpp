// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The library, from update() to a peer that counts frames.

#include <benchmark/benchmark.h>

#include "benchmarks/AllocationCounter.h"
#include "benchmarks/Clocks.h"
#include "benchmarks/ConnectedLibrary.h"
#include "benchmarks/Figures.h"

namespace {

/// Publishes one update and waits until it has left the process.
void updateAndWait(SampleCheck& check, FrameSink& sink)
{
    const std::uint64_t before = sink.frames();
    check.update();
    sink.waitForFrames(before + static_cast<std::uint64_t>(check.cellsOfUpdate()));
}

void addFigure(benchmark::State& state, const std::string& name, double value)
{
    state.counters[name] = value;
    figures::add("update/" + std::to_string(state.range(0)) + " " + name, value);
}

/// The argument is the number of metrics.
void update(benchmark::State& state)
{
    ConnectedLibrary library;
    SampleCheck check(static_cast<int>(state.range(0)));
    library.sink().waitUntilQuiet();
    updateAndWait(check, library.sink()); // creates the rows
    StopWatch thread(CLOCK_THREAD_CPUTIME_ID);
    StopWatch process(CLOCK_PROCESS_CPUTIME_ID);
    StopWatch wall(CLOCK_MONOTONIC);
    for (auto round : state) {
        const std::uint64_t before = library.sink().frames();
        wall.start();
        process.start();
        thread.start();
        check.update();
        thread.stop();
        library.sink().waitForFrames(before + static_cast<std::uint64_t>(check.cellsOfUpdate()));
        process.stop();
        wall.stop();
    }
    const auto rounds = static_cast<double>(state.iterations());
    const double cells = rounds * check.cellsOfUpdate();
    addFigure(state, "thread ns a cell", thread.total() / cells);
    addFigure(state, "thread ns a metric", thread.total() / (rounds * check.metrics()));
    addFigure(state, "process ns a cell", process.total() / cells);
    addFigure(state, "cells a second", cells * 1e9 / wall.total());
}

/// Not timed, and the same on every machine: an update of one metric is over before the client thread wakes
/// up.
void allocations(benchmark::State& state)
{
    ConnectedLibrary library;
    SampleCheck check(1);
    library.sink().waitUntilQuiet();
    updateAndWait(check, library.sink());
    constexpr int updates = 200;
    double count = 0;
    for (auto round : state) {
        const AllocationCounter counter;
        for (int i = 0; i < updates; ++i)
            updateAndWait(check, library.sink());
        count = static_cast<double>(counter.count()) / (updates * check.cellsOfUpdate());
    }
    state.counters["a cell"] = count;
    figures::add("allocations a cell", count);
}

/// The connection is lost, and the library sends everything again.
void replay(benchmark::State& state)
{
    ConnectedLibrary library;
    SampleCheck check(2000);
    library.sink().waitUntilQuiet();
    updateAndWait(check, library.sink());
    for (auto round : state) {
        library.sink().closeConnection();
        check.metric(0).setUnit(" s"); // the sink closes once it has read this
        const std::uint64_t before = library.sink().frames();
        library.sink().waitForFrames(before + static_cast<std::uint64_t>(check.allCells()));
        library.sink().waitUntilQuiet();
    }
    state.counters["cells/s"] = library.sink().framesPerSecond();
    figures::add("replay cells a second", library.sink().framesPerSecond());
}

} // namespace

BENCHMARK(allocations)->Iterations(1)->Repetitions(3);
BENCHMARK(update)->Arg(10)->Iterations(300)->Repetitions(5)->UseRealTime();
BENCHMARK(update)->Arg(100)->Iterations(100)->Repetitions(5)->UseRealTime();
BENCHMARK(update)->Arg(1000)->Iterations(20)->Repetitions(5)->UseRealTime();
BENCHMARK(update)->Arg(10000)->Iterations(3)->Repetitions(3)->UseRealTime();
BENCHMARK(replay)->Iterations(1)->Repetitions(3)->UseRealTime();
