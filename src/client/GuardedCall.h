// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_GUARDEDCALL_H
#define VIGIL_CLIENT_GUARDEDCALL_H

#include <QString>

#include <exception>

#include "base/Logging.h"
#include "base/Printable.h"

/// Calls into the application. An exception breaks the callback's contract, but must not end the process: it
/// becomes an error line in the log. False if the call threw.
template <typename Call>
bool callGuarded(const char* callback, Call call)
{
    const auto report = [callback](const char* what) {
        base::writeLog(QStringLiteral("___ERROR___ %1 threw: %2")
                           .arg(QLatin1String(callback), base::printable(QString::fromLocal8Bit(what))));
    };
    try {
        call();
        return true;
    } catch (const std::exception& error) {
        report(error.what());
    } catch (...) {
        report("something that is no std::exception");
    }
    return false;
}

#endif
