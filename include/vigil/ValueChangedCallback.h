// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_VALUECHANGEDCALLBACK_H
#define VIGIL_VALUECHANGEDCALLBACK_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

class Oid;

/// Learns of values that the manager sets.
///
/// Purpose: makes an object identifier writable. The manager's request is first validated by the callback
/// that is registered for exactly that identifier; once the whole request is accepted, every callback
/// registered for it or for one of its ancestors is told the new value. Override what you need: the base
/// class accepts everything and ignores every change.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, while the library
/// holds the lock of its callback registry. Return quickly, and run no event loop inside. Registering or
/// deregistering anything from inside is not possible; it is refused with an error line in the log.
///
/// Ownership: belongs to the application, which deregisters it before destroying it.
///
/// Failure: must not throw. What is thrown all the same goes to the log; the manager's request fails
/// (genErr).
class VIGIL_EXPORT ValueChangedCallback
{
public:
    virtual ~ValueChangedCallback();

    /// Return the SNMP error status of the request to set cell, which is the whole identifier, to value: 0
    /// accepts, 1 refuses (the manager reads wrongValue), 2 to 18 are passed on as the status of that number.
    virtual unsigned int callbackValidateValue(const Oid& cell, const std::string& value);
    virtual unsigned int callbackValidateValue(const Oid& cell, const int& value);

    /// The value of cell, which may be below the identifier that was registered, has been set. Texts are as
    /// the manager sent them, meant to be UTF-8.
    virtual void callbackValueChanged(const Oid& cell, std::string value);
    virtual void callbackValueChanged(const Oid& cell, int value);
};

} // namespace vigil

#endif
