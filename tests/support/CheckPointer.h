// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_CHECKPOINTER_H
#define VIGIL_SUPPORT_CHECKPOINTER_H

#include <memory>
#include <string>

#include <vigil/HealthCheck.h>

namespace support {

struct DestroyCheck
{
    void operator()(vigil::HealthCheck* check) const { check->destroy(); }
};

/// Ends a health check with the scope, failed tests included.
using CheckPointer = std::unique_ptr<vigil::HealthCheck, DestroyCheck>;

inline CheckPointer makeCheck(const std::string& firstKey, const std::string& secondKey)
{
    return CheckPointer(vigil::createHealthCheck(firstKey, secondKey));
}

} // namespace support

#endif
