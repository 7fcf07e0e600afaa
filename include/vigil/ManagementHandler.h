// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_MANAGEMENTHANDLER_H
#define VIGIL_MANAGEMENTHANDLER_H

#include <string>

#include <vigil/GlobalNames.h>

VIGIL_GLOBAL_BEGIN

/// Functions of the application for a manager to trigger.
///
/// \code
/// class CacheControl : public vigil::ManagementHandler
/// {
/// public:
///     bool takeFlushRequest() { return m_isFlushRequested.exchange(false); } // for the application's thread
///
/// private:
///     void managementFunction1() override { m_isFlushRequested = true; } // on the client thread
///     void managementFunction2() override {}
///     void managementFunction3() override {}
///     void managementFunction4() override {}
///     void managementFunction5(const std::string&) override {}
///
///     std::atomic<bool> m_isFlushRequested{false};
/// };
///
/// CacheControl handler; // outlives its registration
/// vigil::HealthCheck* check = vigil::createHealthCheck("shop", "cache");
/// check->registerManagementHandler(&handler);
/// if (handler.takeFlushRequest())
///     check->update();
/// check->unregisterManagementHandler();
/// check->destroy();
/// \endcode
///
/// Purpose: the application gives the five functions their meaning. The manager runs functions 1 to 4 by
/// setting the trigger cell to 2, and function 5 by setting the command cell to the empty text. The library
/// then resets the cell to 1 or to the empty text. A trigger cannot be refused.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, with the lock of
/// the callback registry held. Return quickly and leave long work to another thread. A handler must not
/// register, clear or remove anything; the library refuses it with an error line in the log. It may call
/// HealthCheck::update() while no other thread is inside the check. Do not hold a lock of your own that the
/// handler needs while you unregister it or destroy its check: both wait for a call in progress.
///
/// Ownership: the application owns it and calls HealthCheck::unregisterManagementHandler() before destroying
/// it.
///
/// Failure: must not throw.
class VIGIL_GLOBAL_EXPORT ManagementHandler
{
public:
    virtual ~ManagementHandler() = default;

    virtual void managementFunction1() = 0;
    virtual void managementFunction2() = 0;
    virtual void managementFunction3() = 0;
    virtual void managementFunction4() = 0;

    /// argument is the text set by the manager; only the empty text triggers.
    virtual void managementFunction5(const std::string& argument) = 0;
};

VIGIL_GLOBAL_END

#if !defined(VIGIL_NO_GLOBAL_NAMES)
namespace vigil {
using ::ManagementHandler;
} // namespace vigil
#endif

#endif
