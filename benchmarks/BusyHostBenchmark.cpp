// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent of a host with many applications.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "benchmarks/Clocks.h"
#include "benchmarks/Figures.h"
#include "benchmarks/Publisher.h"
#include "benchmarks/RunningAgent.h"
#include "benchmarks/SnmpManager.h"

namespace {

constexpr int applications = 200;
constexpr int cellsOfApplication = 500;

using Publishers = std::vector<std::unique_ptr<Publisher>>;

Publishers connectAll(std::uint16_t agentPort)
{
    Publishers all;
    for (int i = 0; i < applications; ++i)
        all.push_back(std::make_unique<Publisher>(agentPort, cellsOfApplication, i * cellsOfApplication));
    return all;
}

/// Every application publishes all its cells once a second; their turns are spread over the second.
void publishUntil(const std::atomic<bool>& isOver, const Publishers& all)
{
    const auto pause = std::chrono::microseconds(1'000'000 / applications);
    auto next = std::chrono::steady_clock::now();
    for (size_t turn = 0; !isOver; ++turn) {
        all[turn % all.size()]->publish();
        std::this_thread::sleep_until(next += pause);
    }
}

/// A manager reads a cell again and again for ten seconds.
void getBesideManyApplications(benchmark::State& state)
{
    const RunningAgent agent;
    SnmpManager manager(agent.snmpAddress(), "private");
    const Publishers all = connectAll(agent.applicationPort());
    const vigil::Oid cell = Publisher::oid(applications * cellsOfApplication - 1);
    while (!manager.get(cell))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::atomic<bool> isOver{false};
    std::thread publishing([&] { publishUntil(isOver, all); });
    double worstMs = 0;
    StopWatch wall(CLOCK_MONOTONIC);
    const double before = agent.processorNanoseconds();
    wall.start();
    for (auto round : state) {
        StopWatch get(CLOCK_MONOTONIC);
        get.start();
        manager.get(cell);
        get.stop();
        worstMs = std::max(worstMs, get.total() / 1e6);
        figures::add("busy GET ms", get.total() / 1e6);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    wall.stop();
    const double share = (agent.processorNanoseconds() - before) / wall.total();
    isOver = true;
    publishing.join();
    figures::add("busy agent %", 100 * share);
    figures::add("worst busy GET ms", worstMs);
    state.counters["agent %"] = 100 * share;
    state.counters["worst ms"] = worstMs;
}

} // namespace

BENCHMARK(getBesideManyApplications)->Iterations(8000)->UseRealTime();
