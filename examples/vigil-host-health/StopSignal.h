// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_STOPSIGNAL_H
#define VIGIL_HOST_HEALTH_STOPSIGNAL_H

/// Turns SIGINT (Ctrl-C) and SIGTERM into a wish to stop that the main loop asks for. A signal handler may do
/// next to nothing, and nothing of the library: it sets a flag.
namespace stopsignal {

void install();
bool isReceived();

} // namespace stopsignal

#endif
