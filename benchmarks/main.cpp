// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Measures the library and the agent beside what they stand on; see docs/performance.md. Apart from Google
// Benchmark's options:
//
//     --json=FILE                   the figures and ratios as JSON
//     --picture=FILE                cost over the number of metrics as SVG, if all of it was measured
//     --expected-allocations=COUNT  fails if the allocations a cell are more than 5 % above
//     --memory METRICS              prints the memory of a metric and does nothing else

#include <benchmark/benchmark.h>

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "benchmarks/CostPicture.h"
#include "benchmarks/Figures.h"
#include "benchmarks/MemoryOfMetrics.h"

namespace {

constexpr int manyMetrics = 10000;
constexpr double tolerance = 1.05;

/// Removes "--name=value" from the arguments and returns the value, or nothing.
std::string takeOption(int& argc, char** argv, const std::string& name)
{
    const std::string start = "--" + name + "=";
    std::string value;
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        if (std::strncmp(argv[i], start.c_str(), start.size()) == 0)
            value = argv[i] + start.size();
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return value;
}

bool areAllocationsAsExpected(const std::string& expected)
{
    const double limit = std::atof(expected.c_str()) * tolerance;
    const double measured = figures::median("allocations a cell");
    std::printf("\n%.1f heap allocations a cell, expected %s\n", measured, expected.c_str());
    return measured <= limit;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string json = takeOption(argc, argv, "json");
    const std::string picture = takeOption(argc, argv, "picture");
    const std::string expectedAllocations = takeOption(argc, argv, "expected-allocations");
    QCoreApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--memory") == 0) {
        printMemoryOfMetrics(std::atoi(argv[2]));
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    if (expectedAllocations.empty())
        figures::add("memory kB a metric", memoryOfMetrics(argv[0], manyMetrics));
    benchmark::RunSpecifiedBenchmarks();
    figures::printRatios();
    if (!json.empty() && !figures::writeJson(json))
        return 1;
    if (!picture.empty() && !writeCostPicture(picture))
        std::printf("\nNo picture: not all numbers of metrics were measured.\n");
    return expectedAllocations.empty() || areAllocationsAsExpected(expectedAllocations) ? 0 : 1;
}
