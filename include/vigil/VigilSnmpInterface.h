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

/// The way to the local SNMP service below the health checks.
///
/// Purpose: publishes single values under object identifiers, and registers callbacks for values that the
/// manager sets and for the state of the connection. Health checks use it; an application needs it only for
/// objects of its own. Identifiers below 1.3.6.1.4.1.32473 are the ones that the service serves.
///
/// Threads: publishing and registration may be called from any thread and return at once; the values travel
/// to the library's client thread. init() and cleanup() must not run at the same time as each other.
/// Callbacks arrive on the client thread.
///
/// Ownership: one object per process, never deleted by the application. Callbacks are not owned and must be
/// deregistered before they are destroyed.
///
/// Failure: no operation reports an error. What is published while the service is away is kept and sent when
/// it is there; the connection is tried every 5 seconds. Calls outside init() and cleanup() do nothing, and
/// are not made up for later. Registration and cleanup() from inside a callback do nothing, apart from an
/// error line in the log.
class VIGIL_EXPORT VigilSnmpInterface
{
public:
    static VigilSnmpInterface& instance();

    /// Starts the library's threads, which connect to the service; the first health check does it. Returns as
    /// soon as the threads run, connected or not. name is UTF-8 and appears in the log. Does nothing when
    /// already started, when the process is ending, and when the system has no thread to give.
    virtual void init(const std::string& name) = 0;

    /// Sends what is still to be sent, closes the connection and ends the library's threads; the last health
    /// check and the end of the process do it. Waits for callbacks and for an attempt to connect that is
    /// under way, the latter up to 5 seconds. Forgets all values and registrations. Does nothing when not
    /// started. init() may follow.
    virtual void cleanup() = 0;

    /// Publish a value under oid, in place of an earlier one. Texts are UTF-8 and copied, and may not be a
    /// null pointer; what follows a NUL byte is not sent. useTraps 1 asks the service for a notification too;
    /// any other number means none.
    virtual void sendValue(const Oid& oid, const char* value, int useTraps) = 0;
    virtual void sendValue(const Oid& oid, const std::string& value, int useTraps) = 0;
    virtual void sendValue(const Oid& oid, int value, int useTraps) = 0;

    /// Withdraws the value under oid.
    virtual void unsetOid(const Oid& oid) = 0;

    /// Withdraws everything published under oid and below it.
    virtual void unsetOidTree(const Oid& oid) = 0;

    /// Routes SETs of oid to cb, in place of an earlier callback for the same oid. Null is ignored.
    virtual void registerValueChangedCallback(const Oid& oid, ValueChangedCallback* cb) = 0;

    /// Removes every registration of cb. When it returns, no call of cb is under way and none will come.
    virtual void deregisterValueChangedCallback(ValueChangedCallback* cb) = 0;

    /// Removes the registration for exactly oid; waits for a call that is under way, as above.
    virtual void deregisterValueChanged(const Oid& oid) = 0;

    /// Tells cb of every connection and loss from now on, but not how things stand at the moment. Null, and a
    /// callback that is registered already, are ignored.
    virtual void registerStateInfoCallback(StateInfoCallback* cb) = 0;

    /// When it returns, no call of cb is under way and none will come.
    virtual void deregisterStateInfoCallback(StateInfoCallback* cb) = 0;

protected:
    VigilSnmpInterface();
    ~VigilSnmpInterface() = default;
};

} // namespace vigil

#endif
