// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_NETWORKWARMUP_H
#define VIGIL_CLIENT_NETWORKWARMUP_H

/// Makes Qt create its static objects for networking, with one connection on the loopback interface.
///
/// Statics are destroyed in the reverse order of their construction, mixed with the exit handlers. The client
/// thread runs until the library's exit handler stops it, so all statics it uses must be older than the
/// handler. The connection is not accepted: Qt would leave an object in this thread, and take the next
/// runner's for a secondary thread.
void warmUpNetwork();

#endif
