// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/MemoryOfMetrics.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "benchmarks/ConnectedLibrary.h"

namespace {

constexpr int updates = 3;

double residentKilobytes()
{
    std::ifstream file("/proc/self/statm");
    double pages = 0;
    double residentPages = 0;
    file >> pages >> residentPages;
    return residentPages * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024;
}

} // namespace

void printMemoryOfMetrics(int metrics)
{
    ConnectedLibrary library;
    const double before = residentKilobytes();
    SampleCheck check(metrics);
    for (int i = 0; i < updates; ++i) {
        check.update();
        library.sink().waitUntilQuiet();
    }
    std::printf("%f\n", (residentKilobytes() - before) / metrics);
}

double memoryOfMetrics(const char* program, int metrics)
{
    const std::string command = std::string(program) + " --memory " + std::to_string(metrics);
    FILE* output = popen(command.c_str(), "r");
    double kilobytes = 0;
    if (!output || std::fscanf(output, "%lf", &kilobytes) != 1 || pclose(output) != 0) {
        std::fprintf(stderr, "cannot run %s\n", command.c_str());
        std::exit(1);
    }
    return kilobytes;
}
