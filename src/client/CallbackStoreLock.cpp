// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/CallbackStoreLock.h"

#include <QString>

#include "base/Logging.h"
#include "client/CallbackStore.h"
#include "client/StoreMutex.h"
#include "client/VigilSnmp.h"

using vigil::VigilSnmp;

CallbackStoreLock::CallbackStoreLock()
{
    VigilSnmp& facade = VigilSnmp::instance();
    if (facade.isOutOfUse())
        return; // a callback that never returns may hold the lock for ever
    facade.storeMutex().lock();
    m_mutex = &facade.storeMutex();
    m_store = facade.callbackStore(); // fetched under the lock that guards it
}

CallbackStoreLock::~CallbackStoreLock()
{
    if (m_mutex)
        m_mutex->unlock();
}

bool CallbackStoreLock::isHeldByThisThread()
{
    VigilSnmp& facade = VigilSnmp::instance();
    return !facade.isOutOfUse() && facade.storeMutex().isHeldByThisThread();
}

bool CallbackStoreLock::refuseInsideCallback(const char* operation)
{
    if (!isHeldByThisThread())
        return false;
    base::writeLog(
        QStringLiteral("___ERROR___ %1 was called from inside a callback of the library. It would wait for "
                       "its own thread for ever, so it did nothing.")
            .arg(QLatin1String(operation)));
    return true;
}
