// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/ServiceNotify.h"

namespace agent::serviceNotify {

void tell(const char*) {}

std::chrono::microseconds watchdogInterval()
{
    return std::chrono::microseconds(0);
}

} // namespace agent::serviceNotify
