// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CALLBACKRULES_H
#define VIGIL_CLIENT_CALLBACKRULES_H

// What an application may do inside a callback of the library.
//
// The client thread holds the callback store's lock during every callback. An operation that needs the lock,
// or waits for the client thread, would wait for its own thread.
//
//   allowed   getters; update() of a check; setters of a metric; sendValue(), unsetOid() and unsetOidTree(),
//             which run at once unless calls of other threads wait before them
//   refused   registering and deregistering callbacks and handlers, remove() of a metric, destroy() of a
//             check, cleanup(); creating a metric, under any name: the result is null

/// True, with an error line in the log, inside a callback. operation names the call in that line.
bool refuseInsideCallback(const char* operation);

#endif
