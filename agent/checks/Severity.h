// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CHECKS_SEVERITY_H
#define VIGIL_AGENT_CHECKS_SEVERITY_H

#include <array>
#include <cstddef>

namespace agent {

/// The values of VigilStatus in VIGIL-MIB.
namespace status {

constexpr int ok = 0;
constexpr int warning = 1;
constexpr int critical = 2;
constexpr int unknown = 3;
constexpr std::size_t count = 4;

/// From the best to the worst.
constexpr std::array<int, count> bySeverity = {ok, unknown, warning, critical};

/// 0 for OK, 1 UNKNOWN, 2 WARNING, 3 CRITICAL: the worst status has the largest number. A status outside
/// VigilStatus counts as UNKNOWN.
constexpr int severityOf(int status)
{
    constexpr std::array<int, count> severities = {0, 2, 3, 1};
    return status < 0 || status >= static_cast<int>(count) ? severities[unknown]
                                                           : severities[static_cast<std::size_t>(status)];
}

} // namespace status
} // namespace agent

#endif
