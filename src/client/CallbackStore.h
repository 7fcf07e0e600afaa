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

/// Who wants to know of what the manager sets, and of the connection.
///
/// Purpose: the two registries behind the facade's registration operations, and the calls into them.
///
/// Threads: every operation needs the facade's store lock, see CallbackStoreLock; the notifications run on
/// the client thread and hold it while they call.
///
/// Ownership: owns no callback.
///
/// Failure: null callbacks are ignored. One that throws is logged, and the next one is called.
class CallbackStore
{
public:
    /// A second registration for the same oid takes the place of the first.
    void registerValueChangedCallback(const vigil::Oid& oid, vigil::ValueChangedCallback* cb);

    void deregisterValueChanged(const vigil::Oid& oid);
    void deregisterValueChangedCallback(vigil::ValueChangedCallback* cb);

    void registerStateInfoCallback(vigil::StateInfoCallback* cb);
    void deregisterStateInfoCallback(vigil::StateInfoCallback* cb);

    /// state is 0 for connected and 1 for disconnected.
    void notifyStateInfo(int state);

    /// Tell every callback registered at oid or at an ancestor of it, ancestors first.
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
