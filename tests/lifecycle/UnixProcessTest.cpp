#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

TEST(Unload, StopsTheLibraryWithAChecksLeftAliveAndCanBeRepeated)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(UNLOADING_HOST),
                     {QStringLiteral(UNLOADABLE_PLUGIN), QStringLiteral("start")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 2);
}

TEST(Unload, LeavesNothingBehindAfterAWholeLife)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(UNLOADING_HOST),
                     {QStringLiteral(UNLOADABLE_PLUGIN), QStringLiteral("startAndStop")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
}

TEST(Fork, TheChildEndsWithoutTheLibrarysThreadsAndTheParentGoesOnPublishing)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("published after the fork"));
}
