// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_VALUECHANGEDCALLBACK_H
#define VIGIL_VALUECHANGEDCALLBACK_H

#include <string>

#include <vigil/vigil_export.h>

namespace vigil {

class Oid;

/// Receives the values set by a manager.
///
/// \code
/// class LogLevel : public vigil::ValueChangedCallback
/// {
/// public:
///     using ValueChangedCallback::callbackValidateValue;
///     using ValueChangedCallback::callbackValueChanged;
///     unsigned int callbackValidateValue(const vigil::Oid&, const int& value) override
///     {
///         return value >= 0 && value <= 3 ? 0 : 1;
///     }
///     void callbackValueChanged(const vigil::Oid&, int value) override { m_level = value; }
///
/// private:
///     std::atomic<int> m_level{1};
/// };
///
/// LogLevel level; // outlives its registration
/// const vigil::Oid oid = vigil::Oid::fromStdString("1.3.6.1.4.1.32473.1.1.0");
/// vigil::VigilSnmpInterface& snmp = vigil::VigilSnmpInterface::instance();
/// snmp.init("shop");
/// snmp.registerValueChangedCallback(oid, &level);
/// snmp.sendValue(oid, 1, 0); // managers can set only a published value
/// snmp.deregisterValueChangedCallback(&level);
/// snmp.cleanup();
/// \endcode
///
/// Purpose: makes an object identifier writable. First the callback registered for exactly this identifier
/// validates the value. Once the whole request is accepted, every callback registered for the identifier or
/// one of its ancestors receives the new value. The base class accepts everything and ignores every change;
/// override the functions you need.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, with the lock of
/// the callback registry held. Return quickly and run no event loop. A callback must not register or
/// deregister anything; the library refuses it with an error line in the log.
///
/// Ownership: the application owns it and deregisters it before destroying it.
///
/// Failure: must not throw. The library logs an exception, and the manager's request fails with genErr.
class VIGIL_EXPORT ValueChangedCallback
{
public:
    virtual ~ValueChangedCallback();

    /// Returns the SNMP error status for setting cell, the full identifier, to value. 0 accepts; 1 refuses,
    /// and the manager reads wrongValue; 2 to 18 reach the manager unchanged.
    virtual unsigned int callbackValidateValue(const Oid& cell, const std::string& value);
    virtual unsigned int callbackValidateValue(const Oid& cell, const int& value);

    /// The manager has set cell, the registered identifier or one below it, to value. A text arrives as the
    /// manager sent it; it should be UTF-8 but is not checked.
    virtual void callbackValueChanged(const Oid& cell, std::string value);
    virtual void callbackValueChanged(const Oid& cell, int value);
};

} // namespace vigil

#endif
