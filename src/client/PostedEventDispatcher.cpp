// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/PostedEventDispatcher.h"

#include <QCoreApplication>

namespace {
constexpr int maxWaitMs = 3600000; // any limit will do: the event loop calls again
} // namespace

/// A wake-up is never lost: one that comes before the wait ends it at once.
bool PostedEventDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    m_isInterrupted = false;
    emit awake();
    QCoreApplication::sendPostedEvents();
    if (flags.testFlag(QEventLoop::WaitForMoreEvents) && !m_isInterrupted) {
        emit aboutToBlock();
        if (m_wakeUps.tryAcquire(1, maxWaitMs))
            m_wakeUps.tryAcquire(m_wakeUps.available(), 0); // this round is for all of them
        emit awake();
        QCoreApplication::sendPostedEvents();
    }
    return true;
}

void PostedEventDispatcher::registerSocketNotifier(QSocketNotifier*) {}

void PostedEventDispatcher::unregisterSocketNotifier(QSocketNotifier*) {}

void PostedEventDispatcher::registerTimer(int, int, Qt::TimerType, QObject*) {}

bool PostedEventDispatcher::unregisterTimer(int)
{
    return false;
}

bool PostedEventDispatcher::unregisterTimers(QObject*)
{
    return false;
}

QList<QAbstractEventDispatcher::TimerInfo> PostedEventDispatcher::registeredTimers(QObject*) const
{
    return {};
}

int PostedEventDispatcher::remainingTime(int)
{
    return -1;
}

void PostedEventDispatcher::wakeUp()
{
    m_wakeUps.release();
}

void PostedEventDispatcher::interrupt()
{
    m_isInterrupted = true;
    wakeUp();
}

bool PostedEventDispatcher::registerEventNotifier(QWinEventNotifier*)
{
    return false;
}

void PostedEventDispatcher::unregisterEventNotifier(QWinEventNotifier*) {}
