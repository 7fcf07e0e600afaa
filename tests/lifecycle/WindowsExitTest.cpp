// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"
#include "support/RunUntil.h"

namespace {

std::string nameOf(const testing::TestParamInfo<const char*>& way)
{
    std::string name = way.param;
    name.erase(std::remove(name.begin(), name.end(), '-'), name.end());
    return name;
}

bool endsWithTermination(const HostProcess& host)
{
    const QStringList log = host.log();
    return !log.isEmpty() && log.last().endsWith(QLatin1String(", Application termination"));
}

} // namespace

// --- Clean shutdown

class WindowsExit : public testing::TestWithParam<const char*>
{
protected:
    static void expectOrderlyEnd(int servicePort)
    {
        HostProcess host(QStringLiteral(WINDOWS_HOST), {QLatin1String(GetParam())}, servicePort);
        EXPECT_EQ(host.exitCode(), 0) << qPrintable(host.output());
        EXPECT_TRUE(endsWithTermination(host)) << qPrintable(host.log().join(QLatin1Char('\n')));
    }
};

TEST_P(WindowsExit, ReturnsWhileTheServiceReads)
{
    const ReadingService service;
    expectOrderlyEnd(service.port());
}

TEST_P(WindowsExit, ReturnsWithoutAService)
{
    expectOrderlyEnd(refusingPort());
}

TEST_P(WindowsExit, ReturnsWhenTheServiceNeverReads)
{
    const NeverReadingService service;
    expectOrderlyEnd(service.port());
}

INSTANTIATE_TEST_SUITE_P(Ways, WindowsExit, testing::Values("exit-process", "exit-process-in-thread"),
                         nameOf);

TEST(WindowsExitWithLocksHeld, ReturnsAndWritesTheLastLine)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(WINDOWS_HOST), {QStringLiteral("exit-process-while-locked")},
                     service.port());
    EXPECT_EQ(host.exitCode(), 0);
    EXPECT_TRUE(endsWithTermination(host));
}

// --- Unloading

/// FreeLibrary() holds the loader's lock while it waits for the library's threads.
class WindowsLoaderLock : public testing::Test
{
protected:
    static void expectPublished(const ReadingService& service)
    {
        HostProcess host(QStringLiteral(WINDOWS_HOST), {QStringLiteral("publish-under-loader-lock")},
                         service.port());
        ASSERT_TRUE(host.waitForLine(QStringLiteral("published")));
        EXPECT_TRUE(service.waitForText("published under the loader's lock"));
        host.say(QStringLiteral("go"));
        EXPECT_EQ(host.exitCode(), 0);
    }

    static int failuresToConnect(const HostProcess& host)
    {
        return host.log().filter(QLatin1String("___NOT CONNECTED___")).size();
    }
};

TEST_F(WindowsLoaderLock, IsNotNeededToPublish)
{
    expectPublished(ReadingService());
}

TEST_F(WindowsLoaderLock, IsNotNeededToReconnect)
{
    expectPublished(ReadingService(ReadingService::OnFirstBytes::HangUpThenRead));
}

TEST_F(WindowsLoaderLock, IsNotNeededToReportFailuresToConnect)
{
    HostProcess host(QStringLiteral(WINDOWS_HOST), {QStringLiteral("publish-under-loader-lock")},
                     refusingPort());
    ASSERT_TRUE(host.waitForLine(QStringLiteral("published")));
    const int before = failuresToConnect(host);
    EXPECT_TRUE(support::runUntil([&] { return failuresToConnect(host) > before; }));
    host.say(QStringLiteral("go"));
    EXPECT_EQ(host.exitCode(), 0);
}

// --- Crashes: the process must end, with an error

class WindowsCrash : public testing::TestWithParam<const char*>
{
protected:
    static void expectEnd(int servicePort)
    {
        HostProcess host(QStringLiteral(WINDOWS_HOST), {QLatin1String(GetParam())}, servicePort);
        EXPECT_NE(host.exitCode(), 0);
        EXPECT_TRUE(host.endedByItself());
    }
};

TEST_P(WindowsCrash, EndsTheProcessWhileTheServiceReads)
{
    const ReadingService service;
    expectEnd(service.port());
}

TEST_P(WindowsCrash, EndsTheProcessWithoutAService)
{
    expectEnd(refusingPort());
}

TEST_P(WindowsCrash, EndsTheProcessWhenTheServiceNeverReads)
{
    const NeverReadingService service;
    expectEnd(service.port());
}

INSTANTIATE_TEST_SUITE_P(Ways, WindowsCrash, testing::Values("throw", "crash"), nameOf);
