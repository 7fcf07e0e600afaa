// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_OPTIONS_H
#define VIGIL_HOST_HEALTH_OPTIONS_H

#include <vigil/Range.h>

#include <chrono>
#include <string>
#include <vector>

struct Thresholds
{
    vigil::Range warning;
    vigil::Range critical;
};

/// The command line, with all values checked.
struct Options
{
    enum class Action { Run, ShowHelp, Fail };

    Options(); ///< the defaults

    /// Reads the arguments, without the program's name. On Fail, problem has the reason.
    Action parse(const std::vector<std::string>& arguments, std::string& problem);

    static std::string help();

    std::chrono::seconds interval{5};
    Thresholds load;
    Thresholds memory;
    Thresholds swap;
    Thresholds uptime;
    Thresholds processes;
    Thresholds disk;
};

#endif
