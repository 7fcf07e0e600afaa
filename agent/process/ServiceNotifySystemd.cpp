// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceNotify.h"

#include <cstdint>

#include <systemd/sd-daemon.h>

namespace agent::serviceNotify {

void tell(const char* state)
{
    sd_notify(0, state);
}

std::chrono::microseconds watchdogInterval()
{
    uint64_t interval = 0;
    const bool isWanted = sd_watchdog_enabled(0, &interval) > 0;
    return std::chrono::microseconds(isWanted ? interval : 0);
}

} // namespace agent::serviceNotify
