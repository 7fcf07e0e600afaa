// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/Peer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>

#include <array>
#include <memory>

#include <winsock2.h>

#include <lmcons.h>

#include "support/Deadline.h"

using platform::Peer;

namespace {

/// Wine knows the process of a socket only after it was used like this.
void setAnOption(qintptr socket)
{
    const DWORD on = 1;
    setsockopt(static_cast<SOCKET>(socket), IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&on),
               sizeof on);
}

/// Wine never knows the process of an accepted socket, nor of one of IPv6.
bool isWine()
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

/// A connection, both of whose ends are in this process.
class PeerTest : public testing::Test
{
protected:
    void connectTo(const QHostAddress& listening, const QHostAddress& host)
    {
        ASSERT_TRUE(server.listen(listening));
        setAnOption(server.socketDescriptor());
        client.connectToHost(host, server.serverPort());
        ASSERT_TRUE(client.waitForConnected(support::deadlineMs));
        setAnOption(client.socketDescriptor());
    }

    void accept()
    {
        ASSERT_TRUE(server.waitForNewConnection(support::deadlineMs));
        accepted.reset(server.nextPendingConnection());
    }

    static void expectThisProcess(const QTcpSocket& socket)
    {
        const Peer peer = platform::peerOf(socket.socketDescriptor());
        EXPECT_TRUE(peer.user);
        EXPECT_EQ(peer.user, platform::ownUser());
        EXPECT_EQ(platform::processOf(peer).id, GetCurrentProcessId());
        EXPECT_EQ(platform::processOf(peer).name, "platform_test.exe");
    }

    QTcpServer server;
    QTcpSocket client;
    std::unique_ptr<QTcpSocket> accepted;
};

/// The addresses of a listening socket and of a connection to it.
struct Addresses
{
    QHostAddress::SpecialAddress listening;
    QHostAddress::SpecialAddress host;
};

class PeerAt : public PeerTest, public testing::WithParamInterface<Addresses>
{
protected:
    void SetUp() override
    {
        if (isWine() && GetParam().host == QHostAddress::LocalHostIPv6)
            GTEST_SKIP() << "Wine knows no process of a socket of IPv6";
        connectTo(QHostAddress(GetParam().listening), QHostAddress(GetParam().host));
    }
};

std::string ownName()
{
    std::array<char, UNLEN + 1> name = {};
    DWORD size = name.size();
    return GetUserNameA(name.data(), &size) ? name.data() : "";
}

} // namespace

INSTANTIATE_TEST_SUITE_P(AllAddresses, PeerAt,
                         testing::Values(Addresses{QHostAddress::LocalHost, QHostAddress::LocalHost},
                                         Addresses{QHostAddress::LocalHostIPv6, QHostAddress::LocalHostIPv6},
                                         Addresses{QHostAddress::AnyIPv4, QHostAddress::LocalHost},
                                         Addresses{QHostAddress::Any, QHostAddress::LocalHost},
                                         Addresses{QHostAddress::Any, QHostAddress::LocalHostIPv6}));

TEST_P(PeerAt, TheConnectingEndIsKnown)
{
    accept();
    expectThisProcess(*accepted);
}

TEST_P(PeerAt, BeforeTheConnectionIsAcceptedTheListenerCounts)
{
    if (isWine() && GetParam().listening == QHostAddress::Any)
        GTEST_SKIP() << "Wine knows no process of a socket of IPv6";
    expectThisProcess(client);
}

TEST_P(PeerAt, TheAcceptingEndIsKnown)
{
    accept();
    if (isWine())
        GTEST_SKIP() << "Wine does not know who has accepted a connection";
    expectThisProcess(client);
}

TEST_F(PeerTest, APeerThatHasClosedItsEndIsUnknown)
{
    connectTo(QHostAddress::LocalHost, QHostAddress::LocalHost);
    accept();
    ASSERT_TRUE(platform::peerOf(accepted->socketDescriptor()).user);
    client.abort();
    const Peer peer = platform::peerOf(accepted->socketDescriptor());
    EXPECT_FALSE(peer.user);
    EXPECT_EQ(platform::processOf(peer).id, 0U);
}

TEST_F(PeerTest, OnlyAConnectedSocketHasAPeer)
{
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    EXPECT_FALSE(platform::peerOf(server.socketDescriptor()).user);
    EXPECT_FALSE(platform::peerOf(-1).user);
}

TEST(Users, HaveNamesAndSecurityIdentifiers)
{
    EXPECT_EQ(platform::userNamed("SYSTEM"), platform::rootUser());
    EXPECT_EQ(platform::userNamed("NT AUTHORITY\\SYSTEM"), platform::rootUser());
    EXPECT_EQ(platform::userNamed(ownName()), platform::ownUser());
    EXPECT_EQ(platform::userNamed("S-1-5-18"), "S-1-5-18");
    EXPECT_EQ(platform::userNamed("S-1-5-21-1-2-3-4711"), "S-1-5-21-1-2-3-4711") << "without a name";
    for (const char* text : {"", " ", "no-such-user", "S-1-", "S-1-5-x", "SY", "-1", "1001"})
        EXPECT_FALSE(platform::userNamed(text)) << text;
}

TEST(Users, OnlyAnIdentifierIsOne)
{
    EXPECT_TRUE(platform::isUserId("S-1-5-18"));
    for (const char* text : {"", "SYSTEM", "SY", "1001", "S-1-", "S-1-5-18 "})
        EXPECT_FALSE(platform::isUserId(text)) << text;
}
