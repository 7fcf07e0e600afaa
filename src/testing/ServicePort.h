// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_SERVICEPORT_H
#define VIGIL_TESTING_SERVICEPORT_H

#include <string>

namespace vigil::test {

/// Points the library to a port for as long as it lives, by the environment of the process.
class ServicePort
{
public:
    explicit ServicePort(int port);
    ~ServicePort();
    ServicePort(const ServicePort&) = delete;
    ServicePort& operator=(const ServicePort&) = delete;

private:
    bool m_wasSet = false;
    std::string m_before;
};

} // namespace vigil::test

#endif
