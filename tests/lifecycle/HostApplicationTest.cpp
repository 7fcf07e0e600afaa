// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

namespace {

const QString lateApplication =
    QStringLiteral("The application has created its QCoreApplication after its first health check.");

void expectOrderlyEnd(const char* way)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(QT_HOST), {QLatin1String(way)}, service.port());
    EXPECT_EQ(host.exitCode(), 0) << qPrintable(host.output());
}

} // namespace

TEST(HostWithAnApplicationObject, ItsLoopKeepsRunningBesideAndAfterTheLibrary)
{
    expectOrderlyEnd("own-loop");
}

TEST(HostWithAnApplicationObject, MayCreateItAfterAStopAndUseTheLibraryAgain)
{
    expectOrderlyEnd("application-after");
}

TEST(HostWithAnApplicationObject, ChecksThatOutliveItStillPublishAndWithdraw)
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

TEST(HostWithAnApplicationObject, MayCreateItBesideALiveCheck)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(QT_HOST), {QStringLiteral("application-beside-check")}, service.port());
    ASSERT_TRUE(host.waitForLine(QStringLiteral("published")));
    EXPECT_TRUE(service.waitForText("published beside the application object"));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForLostPeer());
    EXPECT_EQ(host.log().filter(lateApplication).size(), 1) << qPrintable(host.log().join('\n'));
}

TEST(HostWithAnApplicationObject, MayCreateAndDestroyItWithinTheLifeOfACheck)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(QT_HOST), {QStringLiteral("application-within-check")}, service.port());
    ASSERT_TRUE(host.waitForLine(QStringLiteral("published")));
    EXPECT_TRUE(service.waitForText("published after the application object"));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(service.waitForLostPeer());
}

TEST(HostWithAnApplicationObject, MayCreateItWhileAnotherThreadPublishes)
{
    expectOrderlyEnd("applications-beside-updates");
}

// Qt takes the runners of later lives for secondary threads.
TEST(HostWithoutAnApplicationObject, SeesNoWarningOfQtInLaterLivesOfTheLibrary)
{
    expectOrderlyEnd("lives-without-application");
}

TEST(HostWithAnApplicationObject, MayDestroyItWhileAnotherThreadDestroysTheLastCheck)
{
    expectOrderlyEnd("application-beside-checks");
}

// Calls used to be lost when the client thread dequeued them without an application object.
TEST(HostWithAnApplicationObject, PendingValuesSurviveItsDestruction)
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

TEST(HostWithAnApplicationObject, MayEndWithLiveChecks)
{
    expectOrderlyEnd("application-gone-at-exit");
}

TEST(HostWithAnApplicationObject, MayQuitItsLoopWithALiveCheck)
{
    expectOrderlyEnd("quit-with-live-check");
}

TEST(HostWithAnApplicationObject, MayUseTheLibraryFromAnyThread)
{
    expectOrderlyEnd("check-in-thread");
}
