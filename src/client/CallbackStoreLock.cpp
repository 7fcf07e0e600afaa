// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/CallbackStoreLock.h"

#include "client/CallbackStore.h"
#include "client/StoreMutex.h"
#include "client/VigilSnmp.h"

using vigil::VigilSnmp;

CallbackStoreLock::CallbackStoreLock()
{
    VigilSnmp& facade = VigilSnmp::instance();
    if (facade.isOutOfUse())
        return; // a callback that never returns may hold the lock
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
