// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_CALLBACKSTORE_H
#define VIGIL_CLIENT_CALLBACKSTORE_H

#include <map>
#include <set>
#include <string>

#include <vigil/Oid.h>

#include "types/OidOperators.h"

namespace vigil {
class StateInfoCallback;
class ValueChangedCallback;
} // namespace vigil

/// The registered callbacks: for values set by a manager, and for the state of the connection.
///
/// Purpose: the two registries of the facade's registration operations, and the calls of their callbacks.
///
/// Threads: the caller holds the facade's store lock, see CallbackStoreLock. Notifications run on the client
/// thread.
///
/// Ownership: owns no callback.
///
/// Failure: null callbacks are ignored. If a callback throws, the exception is logged and the next one is
/// called.
class CallbackStore
{
public:
    /// Replaces an earlier registration for the same oid.
    void registerValueChangedCallback(const vigil::Oid& oid, vigil::ValueChangedCallback* cb);

    void deregisterValueChanged(const vigil::Oid& oid);
    void deregisterValueChangedCallback(vigil::ValueChangedCallback* cb);

    void registerStateInfoCallback(vigil::StateInfoCallback* cb);
    void deregisterStateInfoCallback(vigil::StateInfoCallback* cb);

    /// state is 0 for connected and 1 for disconnected.
    void notifyStateInfo(int state);

    /// Calls every callback registered at oid or an ancestor, ancestors first.
    void notifyAll(const vigil::Oid& oid, int value);
    void notifyAll(const vigil::Oid& oid, const std::string& value);

    /// The callback registered for exactly oid, or null. An unknown oid gains an entry with a null callback.
    vigil::ValueChangedCallback* findValueChangedCallback(const vigil::Oid& oid);

private:
    template <typename Value>
    void notifyAllOf(const vigil::Oid& oid, const Value& value);

    std::map<vigil::Oid, vigil::ValueChangedCallback*> m_valueCallbacks;
    std::set<vigil::StateInfoCallback*> m_stateInfoCallbacks;
};

#endif
