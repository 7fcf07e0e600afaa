// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

// No call takes longer than 100 ms beside any kind of service. Three kinds of calls are left out, because
// they may wait by contract: destroy() of the last check and cleanup() hand the rest to the service, for up
// to 8 seconds; removing metrics, checks, handlers and callbacks waits for a callback in progress.

namespace {

void expectPunctualCalls(int servicePort, const QStringList& arguments = {})
{
    HostProcess host(QStringLiteral(PUNCTUAL_HOST), arguments, servicePort, HostProcess::Errors::Dropped);
    EXPECT_EQ(host.exitCode(), 0) << qPrintable(host.output());
}

} // namespace

TEST(CallTime, IsShortBesideAReadingService)
{
    const ReadingService service;
    expectPunctualCalls(service.port());
}

TEST(CallTime, IsShortWithoutAService)
{
    expectPunctualCalls(refusingPort());
}

TEST(CallTime, IsShortBesideANeverReadingService)
{
    const NeverReadingService service;
    expectPunctualCalls(service.port());
}

TEST(CallTime, IsShortDuringAConnect)
{
    const OverrunService service;
    expectPunctualCalls(service.port());
}

TEST(CallTime, IsShortBesideASlowService)
{
    const SlowService service;
    expectPunctualCalls(service.port());
}

TEST(CallTime, IsShortBesideAServiceThatHangsUp)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUp);
    expectPunctualCalls(service.port());
}

TEST(CallTime, IsShortBesideASlowCallback)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUp);
    expectPunctualCalls(service.port(), {QStringLiteral("slow-callback")});
}
