// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

// Qt's dispatcher for the thread of an application object serves GLib's default context, too.
TEST(HostWithGlib, RunsItsLoopInItsOwnThreadAlone)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(GLIB_HOST), {}, service.port());
    if (!host.waitForLine(QStringLiteral("published")))
        GTEST_SKIP() << "this system has no GLib";
    EXPECT_TRUE(service.waitForText("published before the loop"));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("published after the loop"));
}
