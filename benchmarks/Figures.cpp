// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "benchmarks/Figures.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <vector>

namespace figures {

namespace {

enum class Limit { AtMost, AtLeast };

struct Ratio
{
    const char* what;
    const char* figure;
    const char* floor; // the figure it is divided by; null: it stands alone
    Limit limit;
    double required;
    const char* unit;
};

// clang-format off
constexpr Ratio ratios[] = {
    {"application thread a cell / bare queued call",        "update/100 thread ns a cell",   "bare queued call ns",         Limit::AtMost,  1.1, ""},
    {"application thread a cell, 10 000 / 10 metrics",      "update/10000 thread ns a cell", "update/10 thread ns a cell",  Limit::AtMost,  1.3, ""},
    {"whole process a cell / bare queued call",             "update/100 process ns a cell",  "bare queued call ns",         Limit::AtMost,  3,   ""},
    {"cells a second / send() a frame",                     "update/1000 cells a second",    "send() frames a second",      Limit::AtLeast, 0.6, ""},
    {"cells of a replay a second / send() a frame",         "replay cells a second",         "send() frames a second",      Limit::AtLeast, 0.6, ""},
    {"refresh of a metric / set, collect, serialise",       "update/100 thread ns a metric", "prometheus ns a metric",      Limit::AtMost,  45,  ""},
    {"heap allocations a cell",                             "allocations a cell",            nullptr,                       Limit::AtMost,  90,  ""},
    {"resident memory a metric at 10 000 metrics",          "memory kB a metric",            nullptr,                       Limit::AtMost,  20,  "kB"},
    {"1000 metrics, from update() to GET",                  "update to GET ms",              nullptr,                       Limit::AtMost,  35,  "ms"},
    {"agent, processor time a published cell",              "agent us a cell",               nullptr,                       Limit::AtMost,  5,   "us"},
    {"walk of 10 000 cells, standalone / plain snmpd",     "standalone walk us a cell",    "plain snmpd walk us a cell",  Limit::AtMost,  1,   ""},
    {"the same, processor time",                           "standalone walk cpu us a cell", "plain snmpd walk cpu us a cell", Limit::AtMost, 1, ""},
    {"walk of 10 000 cells, through snmpd / plain snmpd",  "subagent walk us a cell",      "plain snmpd walk us a cell",  Limit::AtMost,  2.5, ""},
    {"walk of 100 000 / 10 000 cells, standalone, a cell", "standalone long walk cpu us a cell", "standalone walk cpu us a cell", Limit::AtMost, 1.3, ""},
    {"GET, standalone / plain snmpd",                      "standalone GET us",            "plain snmpd GET us",          Limit::AtMost,  1.2, ""},
    {"GET, through snmpd / plain snmpd",                   "subagent GET us",              "plain snmpd GET us",          Limit::AtMost,  2.5, ""},
    {"agent, 200 applications of 500 cells every second",   "busy agent %",                  nullptr,                       Limit::AtMost,  10,  "%"},
    {"GET beside them",                                     "busy GET ms",                   nullptr,                       Limit::AtMost,  1,   "ms"},
    {"the slowest GET beside them",                         "worst busy GET ms",             nullptr,                       Limit::AtMost,  50,  "ms"},
    {"a SET after a SET",                                   "second SET ms",                 nullptr,                       Limit::AtMost,  2,   "ms"},
};
// clang-format on

std::map<std::string, std::vector<double>>& samples()
{
    static std::map<std::string, std::vector<double>> all;
    return all;
}

bool isKnown(const Ratio& ratio)
{
    return figures::isKnown(ratio.figure) && (!ratio.floor || figures::isKnown(ratio.floor));
}

double valueOf(const Ratio& ratio)
{
    return median(ratio.figure) / (ratio.floor ? median(ratio.floor) : 1);
}

bool isReached(const Ratio& ratio)
{
    return ratio.limit == Limit::AtMost ? valueOf(ratio) <= ratio.required : valueOf(ratio) >= ratio.required;
}

} // namespace

void add(const std::string& name, double value)
{
    samples()[name].push_back(value);
}

bool isKnown(const std::string& name)
{
    return samples().count(name) > 0;
}

double median(const std::string& name)
{
    std::vector<double> values = samples().at(name);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void printRatios()
{
    std::printf("\n%-50s %9s    %s\n", "", "measured", "required");
    for (const Ratio& ratio : ratios) {
        if (isKnown(ratio))
            std::printf("%-50s %9.2f %-2s %s %g %s\n", ratio.what, valueOf(ratio), ratio.unit,
                        ratio.limit == Limit::AtMost ? "<=" : ">=", ratio.required,
                        isReached(ratio) ? "" : "  not reached");
    }
}

bool writeJson(const std::string& path)
{
    std::ofstream file(path);
    const char* separator = "";
    file << "{\n  \"figures\": {";
    for (const auto& entry : samples()) {
        file << separator << "\n    \"" << entry.first << "\": " << median(entry.first);
        separator = ",";
    }
    file << "\n  },\n  \"ratios\": [";
    separator = "";
    for (const Ratio& ratio : ratios) {
        if (!isKnown(ratio))
            continue;
        file << separator << "\n    {\"what\": \"" << ratio.what << "\", \"measured\": " << valueOf(ratio)
             << ", \"required\": " << ratio.required
             << ", \"reached\": " << (isReached(ratio) ? "true" : "false") << "}";
        separator = ",";
    }
    file << "\n  ]\n}\n";
    return file.good();
}

} // namespace figures
