// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

class NoThread : public testing::TestWithParam<const char*>
{
};

TEST_P(NoThread, TheStartIsTakenBackAndTriedAgain)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(THREADLESS_HOST), {QLatin1String(GetParam())}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForText("published with threads"));
    EXPECT_EQ(host.log().filter(QLatin1String("The system has no thread left")).size(), 1);
}

INSTANTIATE_TEST_SUITE_P(Threads, NoThread, testing::Values("0", "1"),
                         [](const auto& count) { return std::string("After") + count.param; });
