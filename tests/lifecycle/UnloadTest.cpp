// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

namespace {

QStringList usePlugin(const char* function)
{
    return {QStringLiteral(UNLOADABLE_PLUGIN), QLatin1String(function), QStringLiteral(LIBRARY_FILE)};
}

} // namespace

TEST(Unload, WithALiveCheckStopsTheLibraryAndCanBeRepeated)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(UNLOADING_HOST), usePlugin("start"), service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_LT(host.startingMs(), HostProcess::limitMs);
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 2);
}

TEST(Unload, WithALiveCheckReturnsWithoutAService)
{
    HostProcess host(QStringLiteral(UNLOADING_HOST), usePlugin("start"), refusingPort());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_LT(host.startingMs(), HostProcess::limitMs);
}

TEST(Unload, WithALiveCheckReturnsWhenTheServiceNeverReads)
{
    const NeverReadingService service;
    HostProcess host(QStringLiteral(UNLOADING_HOST), usePlugin("start"), service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_LT(host.startingMs(), HostProcess::limitMs);
}

TEST(Unload, AfterStartAndStopRemovesEverything)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(UNLOADING_HOST), usePlugin("startAndStop"), service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_LT(host.startingMs(), HostProcess::limitMs);
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 2);
}

TEST(Unload, MayDestroyTheLastCheck)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(UNLOADING_HOST), usePlugin("startAndStopAtUnload"), service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_LT(host.startingMs(), HostProcess::limitMs);
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 2);
}

TEST(SharedLibrary, ServesTwoModulesUntilTheLastIsUnloaded)
{
    const ReadingService service;
    HostProcess host(
        QStringLiteral(SHARING_HOST),
        {QStringLiteral(UNLOADABLE_PLUGIN), QStringLiteral(OTHER_PLUGIN), QStringLiteral(LIBRARY_FILE)},
        service.port());
    ASSERT_TRUE(host.waitForLine(QStringLiteral("published")));
    EXPECT_TRUE(service.waitForText("other_plugin"));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_EQ(host.log().filter(QLatin1String(": Application started.")).size(), 1);
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 1);
}
