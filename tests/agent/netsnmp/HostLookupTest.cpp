// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/netsnmp/HostLookup.h"
#include "support/ManualClock.h"
#include "support/QtPrinters.h"

using agent::HostLookup;
using agent::NamedAddress;

namespace {

/// A name server under the control of the test.
class HostLookupTest : public testing::Test
{
protected:
    static QHostInfo answer(const QStringList& addresses)
    {
        QHostInfo info;
        QList<QHostAddress> hosts;
        for (const QString& address : addresses)
            hosts.append(QHostAddress(address));
        info.setAddresses(hosts);
        return info;
    }

    std::vector<HostLookup::Answered> questions;
    QStringList found;
    support::ManualClock clock;
    HostLookup lookup{*NamedAddress::of(QStringLiteral("tcp:host:705")), clock,
                      [this](const QString& address) { found.append(address); },
                      [this](const QString&, QObject*, HostLookup::Answered answered) {
                          questions.push_back(std::move(answered));
                      }};
};

} // namespace

TEST(NamedAddress, IsAnAddressWithAName)
{
    for (const char* text :
         {"tcp:host:705", "udp:manager.example.com:162", "tcp6:host:705", "host", "host:162"})
        EXPECT_TRUE(NamedAddress::of(QLatin1String(text))) << text;
    for (const char* text : {"/var/agentx/master", "unix:/a", "tcp:127.0.0.1:705", "127.0.0.1", "udp:162",
                             "162", "udp6:[::1]:162", "::1", ""})
        EXPECT_FALSE(NamedAddress::of(QLatin1String(text))) << text;
}

TEST(NamedAddress, PutsTheNumbersInPlaceOfTheName)
{
    EXPECT_EQ(
        NamedAddress::of(QStringLiteral("tcp:host:705"))->with(QHostAddress(QStringLiteral("192.0.2.1"))),
        QStringLiteral("tcp:192.0.2.1:705"));
    EXPECT_EQ(
        NamedAddress::of(QStringLiteral("udp6:host"))->with(QHostAddress(QStringLiteral("2001:db8::1"))),
        QStringLiteral("udp6:[2001:db8::1]"));
}

TEST_F(HostLookupTest, ReportsTheFirstAddressOfTheProtocol)
{
    lookup.start();
    lookup.start();
    ASSERT_EQ(questions.size(), 1u) << "one at a time";
    questions[0](answer({QStringLiteral("2001:db8::1"), QStringLiteral("192.0.2.1")}));
    EXPECT_EQ(found, QStringList(QStringLiteral("tcp:192.0.2.1:705")));
    clock.advance(60'000);
    EXPECT_EQ(questions.size(), 1u);
}

TEST_F(HostLookupTest, TriesAgainAfterAFailure)
{
    lookup.start();
    questions[0](answer({}));
    clock.advance(HostLookup::retryMs);
    ASSERT_EQ(questions.size(), 2u);
    questions[1](answer({QStringLiteral("192.0.2.1")}));
    clock.advance(60'000);
    EXPECT_EQ(questions.size(), 2u);
    EXPECT_EQ(found.size(), 1);
}

TEST_F(HostLookupTest, DoesNotWaitForASilentNameServer)
{
    lookup.start();
    clock.advance(HostLookup::limitMs);
    ASSERT_EQ(questions.size(), 2u);
    questions[0](answer({QStringLiteral("192.0.2.1")}));
    EXPECT_TRUE(found.isEmpty()) << "too late";
    questions[1](answer({QStringLiteral("192.0.2.2")}));
    EXPECT_EQ(found, QStringList(QStringLiteral("tcp:192.0.2.2:705")));
}

TEST_F(HostLookupTest, CanFindTheHostAgain)
{
    lookup.start();
    questions[0](answer({QStringLiteral("192.0.2.1")}));
    lookup.start();
    ASSERT_EQ(questions.size(), 2u);
    questions[1](answer({QStringLiteral("192.0.2.2")}));
    EXPECT_EQ(found.size(), 2);
}
