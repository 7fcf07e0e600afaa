// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QStringList>

#include <algorithm>
#include <string>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"
#include "support/Load.h"

namespace {

/// Runs the plain host and expects a timely exit without a crash.
void expectCleanShutdown(const QString& way, int servicePort)
{
    HostProcess host(QStringLiteral(PLAIN_HOST), {way}, servicePort);
    EXPECT_EQ(host.exitCode(), 0) << qPrintable(host.output());
}

bool endsWithTermination(const QStringList& log)
{
    return !log.isEmpty() && log.last().endsWith(QLatin1String(", Application termination"));
}

bool contains(const QStringList& log, const char* text)
{
    return !log.filter(QLatin1String(text)).isEmpty();
}

/// -1 without such a line.
int indexOf(const QStringList& log, const char* text)
{
    const auto line = std::find_if(
        log.begin(), log.end(), [text](const QString& each) { return each.contains(QLatin1String(text)); });
    return line == log.end() ? -1 : static_cast<int>(line - log.begin());
}

} // namespace

// --- With live checks

class ExitWithLiveChecks : public testing::TestWithParam<const char*>
{
};

TEST_P(ExitWithLiveChecks, ReturnsWhileTheServiceReads)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(PLAIN_HOST), {QLatin1String(GetParam())}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_LT(host.leavingMs(), 3000) << "nothing to wait for";
    const bool wasCleanedUp = contains(host.log(), "[VigilSnmp::cleanup] Cleanup.");
    EXPECT_EQ(wasCleanedUp, SYSTEM_LEAVES_THREADS_TO_EXIT_HANDLERS);
    EXPECT_TRUE(endsWithTermination(host.log()));
}

TEST_P(ExitWithLiveChecks, ReturnsWithoutAService)
{
    expectCleanShutdown(QLatin1String(GetParam()), refusingPort());
}

TEST_P(ExitWithLiveChecks, ReturnsWhenTheServiceNeverReads)
{
    const NeverReadingService service;
    expectCleanShutdown(QLatin1String(GetParam()), service.port());
}

TEST_P(ExitWithLiveChecks, ReturnsDuringAConnect)
{
    const OverrunService service;
    expectCleanShutdown(QLatin1String(GetParam()), service.port());
}

INSTANTIATE_TEST_SUITE_P(Ways, ExitWithLiveChecks,
                         testing::Values("return", "exit", "exit-in-thread", "exit-in-starting-thread"),
                         [](const auto& way) {
                             std::string name = way.param;
                             name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
                             return name;
                         });

// --- In the middle of an operation

TEST(ProcessExit, ReturnsDuringAReplayToAReadingService)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUpThenRead);
    expectCleanShutdown(QStringLiteral("exit-during-replay"), service.port());
}

TEST(ProcessExit, ReturnsDuringAReplayToANeverReadingService)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUpThenNeverRead);
    expectCleanShutdown(QStringLiteral("exit-during-replay"), service.port());
}

TEST(ProcessExit, ReturnsWithALongQueueOfPendingValues)
{
    const NeverReadingService service;
    expectCleanShutdown(QStringLiteral("exit-with-long-queue"), service.port());
}

TEST(ProcessExit, ReturnsFromInsideACallback)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUp);
    HostProcess host(QStringLiteral(PLAIN_HOST), {QStringLiteral("exit-in-callback")}, service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(endsWithTermination(host.log()));
}

TEST(ProcessExit, ReturnsDuringAHangingCallback)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUp);
    expectCleanShutdown(QStringLiteral("exit-while-callback-hangs"), service.port());
}

TEST(ProcessExit, ReturnsWhileOtherThreadsCreateUpdateAndDestroyChecks)
{
    const int exits = support::isFullLoad() ? 1000 : 10;
    int hangsOfWine = 0;
    for (int i = 0; i < exits; ++i) {
        const ReadingService service;
        HostProcess host(QStringLiteral(PLAIN_HOST), {QStringLiteral("exit-beside-busy-threads")},
                         service.port(), HostProcess::Errors::Dropped);
        const int exitCode = host.exitCode();
        if (exitCode != 0 && host.hangsInWine())
            ++hangsOfWine;
        else
            ASSERT_EQ(exitCode, 0) << "exit " << i << ": " << qPrintable(host.ending());
    }
    RecordProperty("hangsOfWine", hangsOfWine);
}

TEST(ProcessExit, StaticsMayUseAndDestroyChecksAfterTheLibraryHasStopped)
{
    const ReadingService service;
    expectCleanShutdown(QStringLiteral("static-destructor"), service.port());
}

TEST(ProcessExit, StaticHandlesMayEndAfterTheLibraryHasStopped)
{
    const ReadingService service;
    expectCleanShutdown(QStringLiteral("static-destructor-of-handles"), service.port());
}

TEST(ProcessExit, StaticsMayFreeHandlesOfCAfterTheLibraryHasStopped)
{
    const ReadingService service;
    expectCleanShutdown(QStringLiteral("static-destructor-in-c"), service.port());
}

// --- Clean shutdown

TEST(CleanShutdown, TheLastCheckWithdrawsItsCellsAndCloses)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(PLAIN_HOST), {QStringLiteral("destroy")}, service.port());
    ASSERT_TRUE(host.waitForLine(QStringLiteral("ready")));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(host.waitForLine(QStringLiteral("destroyed")));
    EXPECT_TRUE(service.waitForLostPeer());
    EXPECT_TRUE(endsWithTermination(host.log()));
}

TEST(CleanShutdown, ACheckMayBeDestroyedBeforeTheThreadsHaveStarted)
{
    const ReadingService service;
    expectCleanShutdown(QStringLiteral("destroy-at-once"), service.port());
}

TEST(CleanShutdown, KeepsItsLimitBesideASlowServiceAndASlowCallback)
{
    SlowService service;
    HostProcess host(QStringLiteral(PLAIN_HOST), {QStringLiteral("destroy-with-much-to-do")}, service.port());
    service.answerOnlyOnce([&] { return contains(host.log(), "[VigilSnmp::cleanup] Cleanup."); });
    EXPECT_EQ(host.exitCode(), 0);
    const QStringList log = host.log();
    EXPECT_LT(indexOf(log, "[VigilSnmp::cleanup] Cleanup."), indexOf(log, ">>>>>>  CONNECTED from "));
    EXPECT_TRUE(contains(log, "The connection ended with ")) << "the service read everything";
    EXPECT_TRUE(endsWithTermination(log));
}

TEST(CleanShutdown, TheHostKeepsItsLocale)
{
    qputenv("LC_ALL", "C.UTF-8");
    expectCleanShutdown(QStringLiteral("keep-locale"), refusingPort());
}
