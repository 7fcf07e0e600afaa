// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_SERVICEPORT_H
#define VIGIL_TESTING_SERVICEPORT_H

namespace vigil::test {

/// Points the library to a port for as long as it lives, by the environment of the process. Of several the
/// newest one counts, in any order of their ends.
class ServicePort
{
public:
    explicit ServicePort(int port);
    ~ServicePort();
    ServicePort(const ServicePort&) = delete;
    ServicePort& operator=(const ServicePort&) = delete;

private:
    const int m_port;
};

} // namespace vigil::test

#endif
