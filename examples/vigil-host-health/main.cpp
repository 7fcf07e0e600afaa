// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Publishes the health of this machine: load, memory, swap space, uptime, processes and disks.

#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Console.h"
#include "DisksCheck.h"
#include "Options.h"
#include "StopSignal.h"
#include "SystemCheck.h"
#include "UpdateClock.h"

namespace {

void watchHost(const Options& options)
{
    UpdateClock clock(options.interval, &stopsignal::isReceived);
    SystemCheck system(options, clock);
    DisksCheck disks(options, clock);

    for (auto wake = UpdateClock::Wake::Interval; wake != UpdateClock::Wake::Stop; wake = clock.wait()) {
        system.update();
        disks.update();
        if (wake == UpdateClock::Wake::Request)
            say("Management function 1: all values have been refreshed.");
    }
    say("Stopping.");
}

} // namespace

int main(int argc, char** argv)
try {
    Options options;
    std::string problem;
    switch (options.parse(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc), problem)) {
    case Options::Action::ShowHelp:
        std::cout << Options::help();
        return 0;
    case Options::Action::Fail:
        complain(problem + ". Try --help.");
        return 2;
    case Options::Action::Run:
        break;
    }
    stopsignal::install();
    watchHost(options);
    return 0;
} catch (const std::exception& error) {
    complain(error.what());
    return 1;
}
