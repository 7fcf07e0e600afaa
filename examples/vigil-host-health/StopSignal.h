// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_STOPSIGNAL_H
#define VIGIL_HOST_HEALTH_STOPSIGNAL_H

/// Remembers SIGINT (Ctrl-C) and SIGTERM until the main loop asks. A signal handler must not call the
/// library; this one sets a flag.
namespace stopsignal {

void install();
bool isReceived();

} // namespace stopsignal

#endif
