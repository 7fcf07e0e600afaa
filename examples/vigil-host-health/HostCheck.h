// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_HOSTCHECK_H
#define VIGIL_HOST_HEALTH_HOSTCHECK_H

#include <string>

#include "Handles.h"

/// What the checks of this program have in common: a health check below the key "host" that takes the
/// manager's triggers. Used on the main thread. The handler must outlive it.
class HostCheck
{
public:
    HostCheck(const std::string& name, const std::string& description, vigil::ManagementHandler& handler);
    virtual ~HostCheck();
    HostCheck(const HostCheck&) = delete;
    HostCheck& operator=(const HostCheck&) = delete;

    /// Reads the host's values, publishes them and says on the console what they are.
    void update();

protected:
    /// Sets the metrics. Returns them as a text for the console.
    virtual std::string readValues() = 0;

    vigil::HealthCheck& check() { return *m_check; }

private:
    CheckHandle m_check;
};

#endif
