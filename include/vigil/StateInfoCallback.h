// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_STATEINFOCALLBACK_H
#define VIGIL_STATEINFOCALLBACK_H

#include <vigil/vigil_export.h>

namespace vigil {

/// Learns whether the library is connected to the local SNMP service.
///
/// Purpose: lets an application report that nobody can see its health at the moment. There is no need to act
/// on it: the library reconnects and publishes again by itself.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, while the library
/// holds the lock of its callback registry. Return quickly, and run no event loop inside. Registering or
/// deregistering anything from inside is not possible; it is refused with an error line in the log.
///
/// Ownership: belongs to the application, which deregisters it before destroying it.
///
/// Failure: must not throw. What is thrown all the same goes to the log.
class VIGIL_EXPORT StateInfoCallback
{
public:
    virtual ~StateInfoCallback() = default;

    /// state is 0 when the connection has been made and 1 when it has been lost.
    virtual void callbackStateInfo(int state) = 0;
};

} // namespace vigil

#endif
