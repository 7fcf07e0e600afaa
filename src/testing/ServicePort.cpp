// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/ServicePort.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "testing/Sockets.h"

namespace vigil::test {

namespace {

constexpr const char* variable = "VIGIL_SERVICE_PORT";

/// What the variable had before the first service, and the ports of all services alive, the newest last.
struct Values
{
    std::mutex mutex;
    bool wasSet = false;
    std::string before;
    std::vector<int> ports;
};

Values& values()
{
    static auto* const all = new Values; // never destroyed: a static service may outlive it
    return *all;
}

} // namespace

ServicePort::ServicePort(int port) : m_port(port)
{
    const std::lock_guard<std::mutex> lock(values().mutex);
    if (values().ports.empty()) {
        const char* before = std::getenv(variable); // NOLINT(concurrency-mt-unsafe): see FakeService
        values().wasSet = before != nullptr;
        values().before = before ? before : "";
    }
    values().ports.push_back(port);
    sockets::setEnvironmentVariable(variable, std::to_string(port).c_str());
}

ServicePort::~ServicePort()
{
    const std::lock_guard<std::mutex> lock(values().mutex);
    std::vector<int>& ports = values().ports;
    ports.erase(std::find(ports.begin(), ports.end(), m_port));
    if (!ports.empty())
        sockets::setEnvironmentVariable(variable, std::to_string(ports.back()).c_str());
    else
        sockets::setEnvironmentVariable(variable, values().wasSet ? values().before.c_str() : nullptr);
}

} // namespace vigil::test
