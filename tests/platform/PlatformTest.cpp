// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/Platform.h"
#include "base/ThreadSafety.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QSysInfo>

#include <atomic>
#include <thread>

namespace {

constexpr int longMs = 20000; // only reached in a failing test
constexpr int shortMs = 20;

QFileInfo program()
{
    return QFileInfo(QCoreApplication::applicationFilePath());
}

QFileInfo moduleFile(const char* name)
{
    return QFileInfo(QString::fromLocal8Bit(platform::moduleFilePath(name).c_str()));
}

} // namespace

TEST(PlatformThread, RunsItsRoutineOnAnotherThreadAndEnds)
{
    std::uint32_t id = 0;
    const auto thread = platform::Thread::start([&id] {
        id = platform::currentThreadId();
        return 0;
    });
    ASSERT_TRUE(thread);
    EXPECT_TRUE(thread->join(-1));
    EXPECT_TRUE(thread->hasEnded());
    EXPECT_NE(id, 0u);
    EXPECT_NE(id, platform::currentThreadId());
}

TEST(PlatformThread, JoinComesBackAtItsLimitWhileTheThreadRuns)
{
    base::Semaphore mayEnd;
    const auto thread = platform::Thread::start([&mayEnd] {
        mayEnd.tryAcquire(1, longMs);
        return 0;
    });
    ASSERT_TRUE(thread);
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(thread->join(shortMs));
    EXPECT_GE(timer.elapsed(), shortMs - 1);
    EXPECT_FALSE(thread->join(0));
    EXPECT_FALSE(thread->hasEnded());
    mayEnd.release();
    EXPECT_TRUE(thread->join(longMs));
}

TEST(PlatformThread, JoinMayBeRepeatedAfterTheEnd)
{
    const auto thread = platform::Thread::start([] { return 0; });
    ASSERT_TRUE(thread);
    EXPECT_TRUE(thread->join(longMs));
    EXPECT_TRUE(thread->join(0));
    EXPECT_TRUE(thread->join(-1));
}

TEST(PlatformThread, KnowsItself)
{
    base::Semaphore known;
    std::unique_ptr<platform::Thread> thread;
    std::atomic<bool> isCurrent{false};
    thread = platform::Thread::start([&] {
        known.tryAcquire(1, longMs);
        isCurrent = thread->isCurrent();
        return 0;
    });
    ASSERT_TRUE(thread);
    EXPECT_FALSE(thread->isCurrent());
    EXPECT_TRUE(thread->isOfThisProcess());
    known.release();
    EXPECT_TRUE(thread->join(longMs));
    EXPECT_TRUE(isCurrent);
}

TEST(PlatformThread, MayOutliveItsObject)
{
    base::Semaphore mayEnd;
    base::Semaphore ended;
    platform::Thread::start([&] {
        mayEnd.tryAcquire(1, longMs);
        ended.release();
        return 0;
    }).reset();
    mayEnd.release();
    EXPECT_TRUE(ended.tryAcquire(1, longMs));
}

TEST(Platform, EachThreadHasItsId)
{
    const std::uint32_t id = platform::currentThreadId();
    EXPECT_EQ(platform::currentThreadId(), id);
    std::uint32_t other = id;
    std::thread([&other] { other = platform::currentThreadId(); }).join();
    EXPECT_NE(other, id);
}

TEST(Platform, SleepTakesItsTime)
{
    QElapsedTimer timer;
    timer.start();
    platform::sleepMs(shortMs);
    EXPECT_GE(timer.nsecsElapsed(), (shortMs - 1) * 1000000);
    timer.start();
    platform::sleepMs(0);
    EXPECT_LT(timer.elapsed(), longMs);
}

TEST(Platform, TheModuleWithoutANameIsTheOneWithThisCode)
{
    EXPECT_EQ(moduleFile(nullptr).canonicalFilePath(), program().canonicalFilePath());
}

TEST(Platform, ALoadedModuleIsFoundByNameAndNotChanged)
{
    const bool isWindows = QSysInfo::kernelType() == QLatin1String("winnt");
    const char* const name = isWindows ? "Qt5Core.dll" : "libQt5Core.so.5";
    EXPECT_TRUE(moduleFile(name).isAbsolute());
    EXPECT_TRUE(moduleFile(name).exists()) << platform::moduleFilePath(name);
    EXPECT_EQ(platform::moduleFilePath(name), platform::moduleFilePath(name));
}

TEST(Platform, AnUnknownModuleHasNoPath)
{
    EXPECT_EQ(platform::moduleFilePath("no-such-module.dll"), "");
}
