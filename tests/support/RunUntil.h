// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_RUNUNTIL_H
#define VIGIL_SUPPORT_RUNUNTIL_H

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include "support/Deadline.h"

namespace support {

/// Runs the calling thread's event loop, deferred deletions included, until predicate holds. Returns whether
/// it does before the deadline. The thread needs a QCoreApplication in the process.
template <typename Predicate>
bool runUntil(Predicate predicate, int timeoutMs = deadlineMs)
{
    bool holds = predicate(); // asked no more once it is true: it may hold for a moment only
    QElapsedTimer elapsed;
    elapsed.start();
    QEventLoop loop;
    QTimer check; // another thread may make the predicate true without waking the loop
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        holds = holds || predicate();
        if (holds || elapsed.hasExpired(timeoutMs))
            loop.quit();
    });
    check.start(1);
    if (!holds)
        loop.exec();
    return holds;
}

/// The same for a predicate that runs the event loop itself: it is not called from inside itself.
template <typename Predicate>
bool askUntil(Predicate predicate, int timeoutMs = deadlineMs)
{
    constexpr int pauseMs = 20;
    QElapsedTimer elapsed;
    elapsed.start();
    while (!predicate()) {
        if (elapsed.hasExpired(timeoutMs))
            return false;
        runUntil([] { return false; }, pauseMs);
    }
    return true;
}

} // namespace support

#endif
