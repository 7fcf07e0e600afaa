// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceManager.h"

#include <cstdint>

#include <systemd/sd-daemon.h>

#include "agent/core/Timer.h"

namespace agent {

namespace {

/// The longest time that systemd accepts between two watchdog messages; 0 for no watchdog.
qint64 watchdogMs()
{
    constexpr uint64_t usPerMs = 1000;
    uint64_t intervalUs = 0;
    return sd_watchdog_enabled(0, &intervalUs) > 0 ? static_cast<qint64>(intervalUs / usPerMs) : 0;
}

} // namespace

struct ServiceManager::System
{
    explicit System(Clock& clock) : watchdog(clock, [] { sd_notify(0, "WATCHDOG=1"); }) {}

    Timer watchdog;
};

ServiceManager::ServiceManager(Clock& clock) : m_system(std::make_unique<System>(clock))
{
    if (const qint64 intervalMs = watchdogMs(); intervalMs > 0)
        m_system->watchdog.startRepeating(intervalMs / 2);
}

ServiceManager::~ServiceManager() = default;

Error ServiceManager::attach()
{
    return {};
}

void ServiceManager::tellReady()
{
    sd_notify(0, "READY=1");
}

void ServiceManager::tellStatus(const QString& text)
{
    sd_notify(0, ("STATUS=" + text.toUtf8()).constData());
}

void ServiceManager::tellStopping()
{
    sd_notify(0, "STOPPING=1");
}

void ServiceManager::tellStopped(int) {}

} // namespace agent
