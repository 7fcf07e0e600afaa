// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

TEST(Fork, TheChildExitsAndTheParentStillPublishes)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FORKING_HOST), {}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("published after the fork"));
    EXPECT_EQ(host.log().filter(QLatin1String(", Application termination")).size(), 1)
        << "the child must not end its parent's log";
}
