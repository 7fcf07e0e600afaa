// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_VIGILSNMPINTERFACE_H
#define VIGIL_VIGILSNMPINTERFACE_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

class Oid;
class StateInfoCallback;
class ValueChangedCallback;

/// Single values and callbacks: the layer below the health checks.
///
/// \code
/// vigil::VigilSnmpInterface& snmp = vigil::VigilSnmpInterface::instance();
/// const vigil::Oid jobs = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.1.2.0");
///
/// snmp.init("shop"); // not needed while a health check exists
/// snmp.sendValue(jobs, 42, 0);
/// snmp.sendValue(jobs, 43, 1); // with a notification
/// snmp.unsetOid(jobs);
/// snmp.cleanup();
/// \endcode
///
/// Purpose: publishes values under object identifiers, and registers callbacks for SETs of a manager and for
/// the state of the connection. Health checks use it; an application needs it only for objects of its own.
/// The service serves identifiers below 1.3.6.1.4.1.32473.
///
/// Threads: any thread may publish and register. Publishing returns at once; the client thread sends the
/// value. Registering and deregistering wait for a callback in progress, and after a reconnect for the start
/// of the replay: until all is sent, or the service lets 10 MB wait. init() and cleanup() must not run at the
/// same time. Callbacks arrive on the client thread.
///
/// Ownership: one object per process; never delete it. It does not own callbacks: deregister each one before
/// destroying it.
///
/// Failure: no operation reports an error. While the service is away, the library keeps the values, retries
/// every 5 seconds and then sends them. While it does not read, the library keeps the last value of each
/// identifier and sends it later, with a notification if any of the values wanted one. Calls before init()
/// and after cleanup() do nothing and are not repeated later. Inside a callback, registration and cleanup()
/// only write an error line to the log.
class VIGIL_EXPORT VigilSnmpInterface
{
public:
    /// The one object of the process.
    static VigilSnmpInterface& instance();

    /// Starts the library's threads, and they connect to the service; the first health check does the same.
    /// Returns as soon as the threads run, connected or not. name is UTF-8 and appears in the log. Does
    /// nothing if the library runs already, if the process is ending, or if no thread, descriptor or memory
    /// is left.
    virtual void init(const std::string& name) = 0;

    /// Sends all pending values, closes the connection and ends the library's threads; the last health check
    /// and the end of the process do the same. Waits for a callback in progress, up to 5 seconds for a
    /// connect in progress, and up to 2 seconds for the service to read pending values. Drops all values and
    /// registrations. Does nothing if the library does not run. init() may follow.
    virtual void cleanup() = 0;

    /// Publish a value under oid; it replaces an earlier one. A text is UTF-8, is copied, ends at its first
    /// NUL byte and must not be a null pointer. With useTraps 1 the service also sends a notification; any
    /// other number means none.
    virtual void sendValue(const Oid& oid, const char* value, int useTraps) = 0;
    virtual void sendValue(const Oid& oid, const std::string& value, int useTraps) = 0;
    virtual void sendValue(const Oid& oid, int value, int useTraps) = 0;

    /// Withdraws the value under oid.
    virtual void unsetOid(const Oid& oid) = 0;

    /// Withdraws the value under oid and all values below it. The library remembers every other identifier
    /// until it stops; this forgets the values below oid.
    virtual void unsetOidTree(const Oid& oid) = 0;

    /// Routes SETs of oid to cb; it replaces an earlier callback for the same oid. Null is ignored.
    virtual void registerValueChangedCallback(const Oid& oid, ValueChangedCallback* cb) = 0;

    /// Removes every registration of cb. Waits for a call in progress; afterwards cb is never called again.
    virtual void deregisterValueChangedCallback(ValueChangedCallback* cb) = 0;

    /// Removes the registration for exactly oid. Waits for a call in progress.
    virtual void deregisterValueChanged(const Oid& oid) = 0;

    /// Reports every later connect and loss to cb, but not the current state. Null and a callback registered
    /// already are ignored.
    virtual void registerStateInfoCallback(StateInfoCallback* cb) = 0;

    /// Waits for a call in progress; afterwards cb is never called again.
    virtual void deregisterStateInfoCallback(StateInfoCallback* cb) = 0;

protected:
    VigilSnmpInterface();
    ~VigilSnmpInterface() = default;
};

} // namespace vigil

#endif
