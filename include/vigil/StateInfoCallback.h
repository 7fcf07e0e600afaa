// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_STATEINFOCALLBACK_H
#define VIGIL_STATEINFOCALLBACK_H

#include <vigil/vigil_export.h>

namespace vigil {

/// Reports whether the library is connected to the local SNMP service.
///
/// \code
/// class ConnectionLight : public vigil::StateInfoCallback
/// {
/// public:
///     bool isConnected() const { return m_isConnected; }
///
/// private:
///     void callbackStateInfo(int state) override { m_isConnected = state == 0; } // on the client thread
///
///     std::atomic<bool> m_isConnected{false};
/// };
///
/// ConnectionLight light; // outlives its registration
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "orders"); // starts the library
/// vigil::VigilSnmpInterface::instance().registerStateInfoCallback(&light);
/// std::cout << (light.isConnected() ? "connected\n" : "not connected\n");
/// vigil::VigilSnmpInterface::instance().deregisterStateInfoCallback(&light);
/// check->destroy();
/// \endcode
///
/// Purpose: lets an application show that managers cannot see its health right now. No reaction is needed:
/// the library reconnects and publishes everything again.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, with the lock of
/// the callback registry held. Return quickly and run no event loop. A callback must not register or
/// deregister anything; the library refuses it with an error line in the log.
///
/// Ownership: the application owns it and deregisters it before destroying it.
///
/// Failure: must not throw. The library logs an exception and goes on.
class VIGIL_EXPORT StateInfoCallback
{
public:
    virtual ~StateInfoCallback() = default;

    /// state is 0 after a connect and 1 after a loss of the connection.
    virtual void callbackStateInfo(int state) = 0;
};

} // namespace vigil

#endif
