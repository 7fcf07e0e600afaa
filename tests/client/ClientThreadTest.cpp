// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ClientThread.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QObject>

#include <atomic>

#include "support/Deadline.h"
#include "support/LibraryLog.h"

// The client's first connection, and with it the first calls of callbacks, come before the thread's event
// loop.
TEST(ClientThread, IsCurrentFromItsStartOn)
{
    const support::LibraryLog log;
    // Atomic, since the thread sanitizer does not see the lock in wait().
    std::atomic<bool> isCurrentAtTheStart{false};
    std::atomic<bool> isCurrentInTheLoop{false};
    ClientThread thread;
    QObject inThread;
    inThread.moveToThread(&thread);
    const auto lookAtTheStart = [&] {
        isCurrentAtTheStart = ClientThread::isCurrent();
        QMetaObject::invokeMethod(
            &inThread, [&] { isCurrentInTheLoop = ClientThread::isCurrent(); }, Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            &inThread, [&] { thread.quit(); }, Qt::QueuedConnection);
    };
    QObject::connect(&thread, &QThread::started, &inThread, lookAtTheStart);
    thread.start();
    ASSERT_TRUE(thread.wait(support::deadlineMs));
    EXPECT_TRUE(isCurrentAtTheStart);
    EXPECT_TRUE(isCurrentInTheLoop);
    EXPECT_FALSE(ClientThread::isCurrent());
}
