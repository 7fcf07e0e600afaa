// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/CallbackRules.h"

#include <QString>

#include "base/Logging.h"
#include "client/CallbackStoreLock.h"

bool refuseInsideCallback(const char* operation)
{
    if (!CallbackStoreLock::isHeldByThisThread())
        return false;
    base::writeLog(
        QStringLiteral("___ERROR___ %1 was called from inside a callback of the library. It would wait for "
                       "its own thread for ever, so it did nothing.")
            .arg(QLatin1String(operation)));
    return true;
}
