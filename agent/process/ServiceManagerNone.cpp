// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceManager.h"

namespace agent {

struct ServiceManager::System
{
};

ServiceManager::ServiceManager(Clock&) {}

ServiceManager::~ServiceManager() = default;

Error ServiceManager::attach()
{
    return {};
}

void ServiceManager::tellReady() {}

void ServiceManager::tellStatus(const QString&) {}

void ServiceManager::tellStopping() {}

void ServiceManager::tellStopped(int) {}

} // namespace agent
