// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <sys/types.h>

#include <csignal>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

TEST(Fork, TheChildrenReturnFromEveryCallAndTheParentStillPublishes)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("published after the fork"));
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 1)
        << "a child must not end its parent's log";
}

TEST(Fork, ADaemonMayStartTheLibraryInItsChild)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {QStringLiteral("daemon")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("published by the daemon"));
}

TEST(Fork, AnOrphanDoesNotKeepTheConnectionOfItsParent)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {QStringLiteral("orphan")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForLostPeer());
    const pid_t orphan = host.output().section(QLatin1Char('\n'), 0, 0).toInt();
    ASSERT_GT(orphan, 0);
    EXPECT_EQ(kill(orphan, SIGKILL), 0) << "it has ended, and its connection with it";
}

TEST(Fork, TheChildrenMayUseAndEndHandlesAndTheParentStillPublishes)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {QStringLiteral("handles")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("handles after the fork"));
    EXPECT_TRUE(service.waitForText("C after the fork"));
}
