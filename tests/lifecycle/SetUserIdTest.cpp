// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

// Qt ends a set-user-id program that creates an application object. The caller's environment would lead the
// program to a service of the caller's own.
TEST(SetUserIdHost, GoesOnAndDoesNotTrustItsEnvironment)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(SET_USER_ID_HOST), {}, service.port());
    if (!host.waitForLine(QStringLiteral("ready")))
        GTEST_SKIP() << "only root can run this";
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(host.waitForLine(QStringLiteral("default port")));
}
