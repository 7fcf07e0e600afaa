// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_NETWORKWARMUP_H
#define VIGIL_CLIENT_NETWORKWARMUP_H

/// Makes Qt build every static object that a connection uses, by making one to itself on the loopback
/// interface.
///
/// At the end of the process statics are destroyed in the reverse order of their construction, and between
/// them the library's exit handler stops the client thread. What that thread uses must have been built before
/// the handler was registered, or it is gone while the thread still runs.
void warmUpNetwork();

#endif
