// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_HOSTCHECK_H
#define VIGIL_HOST_HEALTH_HOSTCHECK_H

#include <vigil/raii.h>

#include <string>

#include "UpdateClock.h"

/// The base of this program's checks: a health check under the first key "host". Its management function 1
/// asks the clock for an update. Used on the main thread. The clock must outlive it.
class HostCheck
{
public:
    HostCheck(const std::string& name, const std::string& description, UpdateClock& clock);
    virtual ~HostCheck() = default;
    HostCheck(const HostCheck&) = delete;
    HostCheck& operator=(const HostCheck&) = delete;

    /// Reads the host's values, publishes them and writes them to the console.
    void update();

protected:
    /// Sets the metrics. Returns their values as a text for the console.
    virtual std::string readValues() = 0;

    vigil::CheckHandle& check() { return m_check; }

private:
    vigil::CheckHandle m_check;
};

#endif
