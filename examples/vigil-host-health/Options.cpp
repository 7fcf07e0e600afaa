// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "Options.h"

#include <cstddef>
#include <sstream>

using vigil::Range;

namespace {

constexpr long longestIntervalSeconds = 86400;

/// One quantity, two options: --NAME-warning and --NAME-critical.
struct Quantity
{
    const char* name;
    const char* meaning;
    Thresholds Options::*thresholds;
    const char* warning;
    const char* critical;
};

constexpr Quantity quantities[] = {
    {"load", "load per core", &Options::load, "~:1.5", "~:4"},
    {"memory", "use of memory in %", &Options::memory, "~:85", "~:95"},
    {"swap", "use of swap space in %", &Options::swap, "~:50", "~:80"},
    {"uptime", "hours since boot", &Options::uptime, "off", "off"},
    {"processes", "number of processes", &Options::processes, "~:2000", "~:5000"},
    {"disk", "use of each disk in %", &Options::disk, "~:85", "~:95"},
};

Range rangeOf(const std::string& text)
{
    Range range;
    return Range::fromString(text, range) == 0 ? range : Range();
}

std::string parseInterval(const std::string& value, std::chrono::seconds& interval)
{
    const bool isShortNumber =
        !value.empty() && value.size() <= 5 && value.find_first_not_of("0123456789") == std::string::npos;
    const long seconds = isShortNumber ? std::stol(value) : 0;
    if (seconds < 1 || seconds > longestIntervalSeconds)
        return "--interval " + value + ": expected seconds from 1 to " +
               std::to_string(longestIntervalSeconds);
    interval = std::chrono::seconds(seconds);
    return {};
}

std::string parseRange(const std::string& name, const std::string& value, Range& target)
{
    Range range;
    if (Range::fromString(value, range) != 0)
        return name + " " + value + ": expected a range such as 10, 10:, ~:10, 10:20, @10:20 or off";
    target = range;
    return {};
}

/// The range set by option name, or null for another option.
Range* findRange(Options& options, const std::string& name)
{
    for (const Quantity& quantity : quantities) {
        Thresholds& thresholds = options.*quantity.thresholds;
        if (name == std::string("--") + quantity.name + "-warning")
            return &thresholds.warning;
        if (name == std::string("--") + quantity.name + "-critical")
            return &thresholds.critical;
    }
    return nullptr;
}

} // namespace

Options::Options()
{
    for (const Quantity& quantity : quantities)
        this->*quantity.thresholds = {rangeOf(quantity.warning), rangeOf(quantity.critical)};
}

Options::Action Options::parse(const std::vector<std::string>& arguments, std::string& problem)
{
    for (std::size_t i = 0; i < arguments.size(); i += 2) {
        const std::string& name = arguments[i];
        if (name == "--help")
            return Action::ShowHelp;
        Range* range = findRange(*this, name);
        if (!range && name != "--interval")
            problem = "unknown option " + name;
        else if (i + 1 == arguments.size())
            problem = name + " needs a value";
        else
            problem = range ? parseRange(name, arguments[i + 1], *range)
                            : parseInterval(arguments[i + 1], interval);
        if (!problem.empty())
            return Action::Fail;
    }
    return Action::Run;
}

std::string Options::help()
{
    std::ostringstream text;
    text << "Usage: vigil-host-health [--interval SECONDS] [--NAME-warning RANGE] [--NAME-critical RANGE]\n\n"
            "Publishes the health of this machine until it gets SIGINT (Ctrl-C) or SIGTERM.\n\n"
            "  --interval SECONDS  time between two updates, 1 to "
         << longestIntervalSeconds << "; 5 by default\n\n"
         << "NAME and the default ranges:\n";
    const auto column = [](std::string cell, std::size_t width) {
        cell.resize(width, ' ');
        return "  " + cell;
    };
    for (const Quantity& quantity : quantities) {
        text << column(quantity.name, 9) << column(quantity.meaning, 24) << column(quantity.warning, 6)
             << "  " << quantity.critical << '\n';
    }
    text
        << "\nRANGE is the range of acceptable values: 10 (0 to 10), 10: (10 and more), ~:10 (10 and less),\n"
           "10:20, @10:20 (outside 10 to 20), off.\n";
    return text.str();
}
