// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/ServicePort.h"

#include <cstdlib>

#include "testing/Sockets.h"

namespace vigil::test {

namespace {

constexpr const char* variable = "VIGIL_SERVICE_PORT";

} // namespace

ServicePort::ServicePort(int port)
{
    if (const char* before = std::getenv(variable)) { // NOLINT(concurrency-mt-unsafe): see FakeService
        m_wasSet = true;
        m_before = before;
    }
    sockets::setEnvironmentVariable(variable, std::to_string(port).c_str());
}

ServicePort::~ServicePort()
{
    sockets::setEnvironmentVariable(variable, m_wasSet ? m_before.c_str() : nullptr);
}

} // namespace vigil::test
