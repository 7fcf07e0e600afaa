// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <functional>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

// No call takes longer than 100 ms beside any kind of service. Three kinds of calls are left out, because
// they may wait by contract: destroy() of the last check and cleanup() hand the rest to the service, for up
// to 8 seconds; removing metrics, checks, handlers and callbacks waits for a callback in progress.

namespace {

/// What a host says that times its calls, and its exit code.
struct Outcome
{
    int exitCode = -1;
    QString output;
};

Outcome outcomeBeside(int servicePort, const QStringList& arguments)
{
    HostProcess host(QStringLiteral(PUNCTUAL_HOST), arguments, servicePort, HostProcess::Errors::Dropped);
    const int exitCode = host.exitCode();
    return {exitCode, host.output()};
}

/// A call during a pause of a virtual machine takes long, so a host may try three times. A call that blocks
/// does so each time.
void expectPunctualCalls(const std::function<Outcome()>& run)
{
    Outcome outcome = run();
    for (int attempt = 1; attempt < 3 && outcome.exitCode != 0; ++attempt)
        outcome = run();
    EXPECT_EQ(outcome.exitCode, 0) << qPrintable(outcome.output);
}

template <typename Service, typename... Arguments>
void expectPunctualCallsBeside(const QStringList& hostArguments, Arguments... serviceArguments)
{
    expectPunctualCalls([&] {
        const Service service(serviceArguments...);
        return outcomeBeside(service.port(), hostArguments);
    });
}

} // namespace

TEST(CallTime, IsShortBesideAReadingService)
{
    expectPunctualCallsBeside<ReadingService>({});
}

TEST(CallTime, IsShortWithoutAService)
{
    expectPunctualCalls([] { return outcomeBeside(refusingPort(), {}); });
}

TEST(CallTime, IsShortBesideANeverReadingService)
{
    expectPunctualCallsBeside<NeverReadingService>({});
}

TEST(CallTime, IsShortDuringAConnect)
{
    expectPunctualCallsBeside<OverrunService>({});
}

TEST(CallTime, IsShortBesideASlowService)
{
    expectPunctualCallsBeside<SlowService>({});
}

TEST(CallTime, IsShortBesideAServiceThatHangsUp)
{
    expectPunctualCallsBeside<ReadingService>({}, ReadingService::OnFirstBytes::HangUp);
}

TEST(CallTime, IsShortBesideASlowCallback)
{
    expectPunctualCallsBeside<ReadingService>({QStringLiteral("slow-callback")},
                                              ReadingService::OnFirstBytes::HangUp);
}
