// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_MANAGEMENTHANDLER_H
#define VIGIL_MANAGEMENTHANDLER_H

#include <string>

#include <vigil/vigil_export.h>

/// Implemented by an application whose functions the manager may trigger.
///
/// Purpose: five functions whose meaning is the application's own. The manager runs function 1 to 4 by
/// setting its trigger cell to 2, and function 5 by setting its command cell to the empty text; the cells
/// return to 1 and to the empty text by themselves. A trigger cannot be refused.
///
/// Threads: called on the library's client thread, one call at a time in the whole process, while the library
/// holds the lock of its callback registry. Return quickly; hand long work to a thread of your own.
/// Registering, clearing or removing anything of the library from inside is not possible; it is refused with
/// an error line in the log. HealthCheck::update() may be called when no other thread is inside the check; a
/// lock that sees to this must not be held while a handler is unregistered or a check destroyed, which waits
/// for the call under way.
///
/// Ownership: belongs to the application; HealthCheck::unregisterManagementHandler() comes before its
/// destruction.
///
/// Failure: must not throw.
class VIGIL_EXPORT ManagementHandler
{
public:
    virtual ~ManagementHandler() = default;

    virtual void managementFunction1() = 0;
    virtual void managementFunction2() = 0;
    virtual void managementFunction3() = 0;
    virtual void managementFunction4() = 0;

    /// The argument is the text that the manager set. Only the empty text triggers.
    virtual void managementFunction5(const std::string& argument) = 0;
};

namespace vigil {
using ::ManagementHandler;
} // namespace vigil

#endif
