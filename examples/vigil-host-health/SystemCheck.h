// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_SYSTEMCHECK_H
#define VIGIL_HOST_HEALTH_SYSTEMCHECK_H

#include "HostCheck.h"
#include "Options.h"
#include "WatchedMetric.h"

/// Load, memory, swap space, uptime and processes, and whether all of them are readable.
class SystemCheck : public HostCheck
{
public:
    SystemCheck(const Options& options, UpdateClock& clock);

private:
    std::string readValues() override;

    WatchedMetric m_load;
    WatchedMetric m_memory;
    WatchedMetric m_swap;
    WatchedMetric m_uptime;
    WatchedMetric m_processes;
    vigil::SimpleHandle m_readings;
};

#endif
