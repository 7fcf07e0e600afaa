// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICENOTIFY_H
#define VIGIL_AGENT_PROCESS_SERVICENOTIFY_H

#include <chrono>

/// The way to the service manager of the host. One source file for systemd, one for hosts without.
///
/// Threads: any. Failure: what cannot be told is lost.
namespace agent::serviceNotify {

/// Tells lines of the form NAME=value.
void tell(const char* state);

/// How often the service manager wants to hear of the process at least; 0 for never.
std::chrono::microseconds watchdogInterval();

} // namespace agent::serviceNotify

#endif
