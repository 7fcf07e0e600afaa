// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "SystemCheck.h"

#include "HostValues.h"

using vigil::HealthStatus;

SystemCheck::SystemCheck(const Options& options, vigil::RangeChangeHandler& rangeHandler,
                         vigil::ManagementHandler& managementHandler)
    : HostCheck("system", "The machine", managementHandler),
      m_load(check(), "load", " per core", options.load, rangeHandler),
      m_memory(check(), "memory", "%", options.memory, rangeHandler),
      m_swap(check(), "swap", "%", options.swap, rangeHandler),
      m_uptime(check(), "uptime", " h", options.uptime, rangeHandler),
      m_processes(check(), "processes", "", options.processes, rangeHandler),
      m_readings(check().createSimpleMetric("readings"))
{}

std::string SystemCheck::readValues()
{
    int missing = 0;
    missing += !m_load.set(host::loadPerCore());
    missing += !m_memory.set(host::memoryUsePercent());
    missing += !m_swap.set(host::swapUsePercent());
    missing += !m_uptime.set(host::uptimeHours());
    missing += !m_processes.set(host::processCount());
    m_readings->setStatus(missing == 0 ? HealthStatus::Ok : HealthStatus::Unknown);
    m_readings->setInfo(missing == 0 ? "all values are up to date"
                                     : std::to_string(missing) + " values could not be read");
    return m_load.text() + ", " + m_memory.text() + ", " + m_swap.text() + ", " + m_uptime.text() + ", " +
           m_processes.text();
}
