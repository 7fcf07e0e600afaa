// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

namespace {

void expectOrderlyEnd(const char* way)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(QT_HOST), {QLatin1String(way)}, service.port());
    EXPECT_EQ(host.exitCode(), 0) << qPrintable(host.output());
}

} // namespace

TEST(HostWithAnApplicationObject, ItsOwnLoopRunsOnBesideAndAfterTheLibrary)
{
    expectOrderlyEnd("own-loop");
}

TEST(HostWithAnApplicationObject, MayCreateItAfterTheLibraryHasStoppedAndBeUsedWithItAgain)
{
    expectOrderlyEnd("application-after");
}

TEST(HostWithAnApplicationObject, ChecksThatOutliveItStillPublishAndTakeTheirCellsBack)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(QT_HOST), {QStringLiteral("application-before-checks")}, service.port());
    ASSERT_TRUE(host.waitForLine(QStringLiteral("published")));
    EXPECT_TRUE(service.waitForText("published after the application object"));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForLostPeer());
    EXPECT_TRUE(host.log().last().endsWith(QLatin1String(", Application termination")));
}

TEST(HostWithAnApplicationObject, MayDestroyItWhileAnotherThreadDestroysTheLastCheck)
{
    expectOrderlyEnd("application-beside-checks");
}

// What the client's thread took out of its queue while there was no application object used to be lost.
TEST(HostWithAnApplicationObject, NothingIsLostThatIsOnItsWayWhenItGoes)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(QT_HOST), {QStringLiteral("application-gone-while-publishing")},
                     service.port());
    int missing = 0;
    for (int i = 1999; i >= 0 && missing == 0; --i) {
        if (!service.waitForText("value " + QByteArray::number(i) + ";"))
            ++missing;
    }
    EXPECT_EQ(missing, 0);
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
}

TEST(HostWithAnApplicationObject, MayEndWithChecksThatOutliveIt)
{
    expectOrderlyEnd("application-gone-at-exit");
}

TEST(HostWithAnApplicationObject, MayQuitItsLoopWhileAChecksLives)
{
    expectOrderlyEnd("quit-with-live-check");
}

TEST(HostWithAnApplicationObject, MayUseTheLibraryInAnyThread)
{
    expectOrderlyEnd("check-in-thread");
}
