// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceManager.h"

#include "agent/process/ServiceNotify.h"

namespace agent {

ServiceManager::ServiceManager()
{
    const auto interval =
        std::chrono::duration_cast<std::chrono::milliseconds>(serviceNotify::watchdogInterval());
    if (interval.count() == 0)
        return;
    QObject::connect(&m_watchdog, &QTimer::timeout, [] { serviceNotify::tell("WATCHDOG=1"); });
    m_watchdog.start(interval / 2);
}

void ServiceManager::tellReady()
{
    serviceNotify::tell("READY=1");
}

void ServiceManager::tellStatus(const QString& text)
{
    serviceNotify::tell("STATUS=" + text.toUtf8());
}

void ServiceManager::tellStopping()
{
    serviceNotify::tell("STOPPING=1");
}

} // namespace agent
