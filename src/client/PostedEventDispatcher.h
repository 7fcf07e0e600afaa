// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_POSTEDEVENTDISPATCHER_H
#define VIGIL_CLIENT_POSTEDEVENTDISPATCHER_H

#include <QAbstractEventDispatcher>

#include <atomic>

#include "base/ThreadSafety.h"

class QWinEventNotifier;

/// Delivers posted events, and nothing else, to the runner's thread.
///
/// Purpose: Qt's dispatcher for the thread of an application object also serves GLib's default context. It
/// would run the main loop of a host with GLib in the library's thread. The runner needs neither timers nor
/// socket notifiers, so they never fire here.
///
/// Threads: as for QAbstractEventDispatcher; any thread may call wakeUp() and interrupt().
class PostedEventDispatcher : public QAbstractEventDispatcher
{
    Q_OBJECT

public:
    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    bool hasPendingEvents() override { return false; } // Qt keeps posted events itself

    void registerSocketNotifier(QSocketNotifier* notifier) override;
    void unregisterSocketNotifier(QSocketNotifier* notifier) override;

    void registerTimer(int timerId, int interval, Qt::TimerType timerType, QObject* object) override;
    bool unregisterTimer(int timerId) override;
    bool unregisterTimers(QObject* object) override;
    QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int timerId) override;

    void wakeUp() override;
    void interrupt() override;
    void flush() override {}

    // Qt declares these two for Windows alone.
    virtual bool registerEventNotifier(QWinEventNotifier* notifier);
    virtual void unregisterEventNotifier(QWinEventNotifier* notifier);

private:
    base::Semaphore m_wakeUps;
    std::atomic<bool> m_isInterrupted{false};
};

#endif
