// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "lifecycle/HostProcess.h"
#include "lifecycle/HostSteps.h"
#include "lifecycle/SilentServices.h"

class HostileHost : public testing::TestWithParam<const char*>
{
};

TEST_P(HostileHost, MayUseTheLibraryAtOddMoments)
{
    constexpr int runs = 3;
    for (int run = 0; run < runs; ++run) {
        const ReadingService service(ReadingService::OnFirstBytes::HangUp);
        HostProcess host(QStringLiteral(HOSTILE_HOST), {QLatin1String(GetParam())}, service.port(),
                         HostProcess::Errors::Dropped);
        if (host.exitCode() == host::notPossibleHere)
            GTEST_SKIP() << "a limit of this system is in the way";
        ASSERT_EQ(host.exitCode(), 0) << qPrintable(host.output()) << qPrintable(host.log().join('\n'));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Moments, HostileHost,
    testing::Values("thread-destructor", "main-thread-destructor", "client-thread-destructor",
                    "first-in-static-destructor", "thread-outlives-main", "exit-handler", "quick-exit",
                    "exec", "fork-exec", "fork-in-callback", "everything-in-callback", "throw-in-callback",
                    "exit-in-callback-beside-destroy", "cleanup-beside-checks", "odd-texts",
                    "floating-point-traps", "floating-point-traps-around-callback",
                    "closed-standard-descriptors", "small-stack", "signal-storm", "many-descriptors",
                    "small-file-limit", "strict-mode-mask", "cancelled-threads", "cancelled-quiet-threads"),
    [](const auto& way) {
        std::string name = way.param;
        name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
        return name;
    });

// The sanitizers' allocators hang in a child forked beside busy threads.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(ForkingThreads, MayForkWhileOthersStartAndStopTheLibrary)
{
    const ReadingService service;
    constexpr int runs = 20; // what the library builds on first use, it builds once a process
    for (int run = 0; run < runs; ++run) {
        HostProcess host(QStringLiteral(HOSTILE_HOST), {QStringLiteral("fork-beside-starts")}, service.port(),
                         HostProcess::Errors::Dropped);
        ASSERT_EQ(host.exitCode(), 0) << "run " << run;
    }
}
#endif

TEST(StandardDescriptors, AreNoConnectionsAfterTheHostHasClosedThem)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUpThenRead);
    HostProcess host(QStringLiteral(HOSTILE_HOST), {QStringLiteral("standard-descriptors-closed-later")},
                     service.port(), HostProcess::Errors::Dropped);
    EXPECT_EQ(host.exitCode(), 0);
}

TEST(CopiesOfTheLibrary, DoNotDisturbEachOther)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(HOSTILE_HOST), {QStringLiteral("two-copies")}, service.port(),
                     HostProcess::Errors::Dropped);
    EXPECT_TRUE(service.waitForText("published after the copy was unloaded"));
    EXPECT_EQ(host.exitCode(), 0);
}
