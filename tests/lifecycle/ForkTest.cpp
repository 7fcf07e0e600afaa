// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

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

TEST(Fork, TheChildrenMayUseAndEndHandlesAndTheParentStillPublishes)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {QStringLiteral("handles")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("handles after the fork"));
    EXPECT_TRUE(service.waitForText("C after the fork"));
}
