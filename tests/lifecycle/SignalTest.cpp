// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "lifecycle/HostProcess.h"
#include "lifecycle/SilentServices.h"

namespace {

int exitCodeOf(const char* way, int servicePort)
{
    HostProcess host(QStringLiteral(SIGNAL_HOST), {QLatin1String(way)}, servicePort);
    return host.exitCode();
}

} // namespace

TEST(Signals, TheHostKeepsItsDispositionOfSigpipe)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUp);
    EXPECT_EQ(exitCodeOf("keep-disposition", service.port()), 0);
}

TEST(Signals, ALostPeerRaisesNoSignal)
{
    const ReadingService service(ReadingService::OnFirstBytes::HangUp);
    EXPECT_EQ(exitCodeOf("survive-lost-peer", service.port()), 0);
}

TEST(Signals, TheSocketsOfAQtHostSurviveTheirPeers)
{
    const ReadingService service;
    EXPECT_EQ(exitCodeOf("keep-qt-sockets", service.port()), 0);
}

TEST(Signals, SigwaitOfTheHostTakesEachSignal)
{
    const ReadingService service;
    EXPECT_EQ(exitCodeOf("sigwait", service.port()), 0);
}

TEST(Descriptors, ChildrenInheritNoneOfTheLibrary)
{
    const ReadingService service;
    EXPECT_EQ(exitCodeOf("keep-descriptors", service.port()), 0);
}
