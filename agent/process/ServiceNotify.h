// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_SERVICENOTIFY_H
#define VIGIL_AGENT_PROCESS_SERVICENOTIFY_H

#include <chrono>

/// Messages to the host's service manager. One source file for systemd, one for hosts without it.
///
/// Failure: a message is lost.
namespace agent::serviceNotify {

/// state has the form NAME=value.
void tell(const char* state);

/// The longest time the service manager accepts between two watchdog messages; 0 for no watchdog.
std::chrono::microseconds watchdogInterval();

} // namespace agent::serviceNotify

#endif
