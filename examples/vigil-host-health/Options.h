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

/// What the command line asks for. Every value is checked here.
struct Options
{
    enum class Action { Run, ShowHelp, Fail };

    Options(); ///< the defaults

    /// Reads the arguments, without the program's name. When it fails, problem says why.
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
