// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "SystemCheck.h"

#include "HostValues.h"

using vigil::HealthStatus;

SystemCheck::SystemCheck(const Options& options, UpdateClock& clock)
    : HostCheck("system", "The machine", clock),
      m_load(check(), "load", " per core", options.load),
      m_memory(check(), "memory", "%", options.memory),
      m_swap(check(), "swap", "%", options.swap),
      m_uptime(check(), "uptime", " h", options.uptime),
      m_processes(check(), "processes", "", options.processes),
      m_readings(check(), "readings")
{}

std::string SystemCheck::readValues()
{
    int missing = 0;
    missing += !m_load.set(host::loadPerCore());
    missing += !m_memory.set(host::memoryUsePercent());
    missing += !m_swap.set(host::swapUsePercent());
    missing += !m_uptime.set(host::uptimeHours());
    missing += !m_processes.set(host::processCount());
    if (missing == 0)
        m_readings.set(HealthStatus::Ok, "all values are up to date");
    else
        m_readings.set(HealthStatus::Unknown, std::to_string(missing) + " values could not be read");
    return m_load.text() + ", " + m_memory.text() + ", " + m_swap.text() + ", " + m_uptime.text() + ", " +
           m_processes.text();
}
