// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_PASSEDSOCKET_H
#define VIGIL_AGENT_PROCESS_PASSEDSOCKET_H

#include "agent/core/Error.h"

namespace agent {

constexpr int noSocket = -1;

/// Takes the listening socket from the service manager: it holds the port while no agent runs (socket
/// activation). Removes the variables about it from the environment.
///
/// descriptor: noSocket if nothing was passed to this process.
/// Failure: what was passed is not one TCP socket that listens on a loopback address.
Error takePassedSocket(int& descriptor);

} // namespace agent

#endif
