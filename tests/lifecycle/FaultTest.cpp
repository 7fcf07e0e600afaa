// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"
#include "support/FaultySystem.h"
#include "support/Load.h"

namespace {

QStringList plan(const QString& function, int first, int count)
{
    return {function, QString::number(first), QString::number(count)};
}

/// A library that could not start tries again with the next first check.
void sayAgainIfNotStarted(HostProcess& host, const QString& function)
{
    if (function == QLatin1String("pthread_create") || function == QLatin1String("descriptors"))
        host.say(QStringLiteral("again"));
}

void expectCleanEnd(HostProcess& host)
{
    host.say(QStringLiteral("leave"));
    EXPECT_EQ(host.exitCode(), 0) << qPrintable(host.output()) << qPrintable(host.log().join('\n'));
}

void expectRecoveryFromOneFault(const QString& function, int call)
{
    SCOPED_TRACE(qPrintable(QStringLiteral("%1, call %2").arg(function).arg(call)));
    const ReadingService service;
    HostProcess host(QStringLiteral(FAULTY_HOST), plan(function, call, 1), service.port(),
                     HostProcess::Errors::Dropped);
    ASSERT_TRUE(host.waitForLine(QStringLiteral("running")));
    sayAgainIfNotStarted(host, function);
    EXPECT_TRUE(service.waitForText("published beside faults"));
    expectCleanEnd(host);
}

} // namespace

class Fault : public testing::TestWithParam<const char*>
{
};

TEST_P(Fault, OfOneCallIsOvercome)
{
    const int calls = support::isFullLoad() ? 40 : 3;
    for (int call = 1; call <= calls && !HasFailure(); ++call)
        expectRecoveryFromOneFault(QLatin1String(GetParam()), call);
}

TEST_P(Fault, OfAllCallsIsOvercomeOnceItEnds)
{
    const ReadingService service;
    HostProcess host(QStringLiteral(FAULTY_HOST), plan(QLatin1String(GetParam()), 1, faults::all),
                     service.port(), HostProcess::Errors::Dropped);
    ASSERT_TRUE(host.waitForLine(QStringLiteral("running")));
    host.say(QStringLiteral("heal"));
    sayAgainIfNotStarted(host, QLatin1String(GetParam()));
    EXPECT_TRUE(service.waitForText("published beside faults"));
    expectCleanEnd(host);
}

INSTANTIATE_TEST_SUITE_P(Functions, Fault,
                         testing::Values("connect", "descriptors", "flock", "fstat", "ftruncate", "mkdir",
                                         "open", "poll", "pthread_create", "send", "setsockopt", "socket",
                                         "write"),
                         [](const auto& function) {
                             const std::string name = function.param;
                             return "Of" + name.substr(0, name.find('_'));
                         });
