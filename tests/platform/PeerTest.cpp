// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/Peer.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtEndian>

#include <initializer_list>
#include <memory>

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "platform/peer/SocketLookup.h"
#include "support/AsUser.h"
#include "support/Deadline.h"

using platform::Peer;
using support::AsUser;
using support::firstUser;

namespace {

/// A connection, both of whose ends are in this process.
class PeerTest : public testing::Test
{
protected:
    void connectTo(const QHostAddress& host)
    {
        ASSERT_TRUE(server.listen(host));
        client.connectToHost(server.serverAddress(), server.serverPort());
        ASSERT_TRUE(client.waitForConnected(support::deadlineMs));
    }

    void accept()
    {
        ASSERT_TRUE(server.waitForNewConnection(support::deadlineMs));
        accepted.reset(server.nextPendingConnection());
    }

    void expectThatBothEndsKnowEachOther() const
    {
        for (const QTcpSocket* socket : std::initializer_list<const QTcpSocket*>{&client, accepted.get()}) {
            const Peer peer = platform::peerOf(socket->socketDescriptor());
            EXPECT_EQ(peer.user, platform::ownUser());
            EXPECT_EQ(platform::processOf(peer).id, static_cast<std::uint32_t>(getpid()));
            EXPECT_EQ(platform::processOf(peer).name, "platform_test");
        }
        EXPECT_NE(platform::peerOf(client.socketDescriptor()).key,
                  platform::peerOf(accepted->socketDescriptor()).key);
    }

    /// False in many containers.
    static bool hasIpv6()
    {
        QTcpServer any;
        return any.listen(QHostAddress(QHostAddress::LocalHostIPv6));
    }

    static bool hasIpv6Sockets()
    {
        const int made = socket(AF_INET6, SOCK_STREAM, 0);
        if (made >= 0)
            close(made);
        return made >= 0;
    }

    QTcpServer server;
    QTcpSocket client;
    std::unique_ptr<QTcpSocket> accepted;
};

void resetOnClose(QTcpSocket& socket)
{
    const linger now = {1, 0};
    setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

platform::Endpoint endpoint(quint16 port)
{
    platform::Endpoint endpoint;
    endpoint.address[0] = qToBigEndian(0x7f000001U);
    endpoint.port = qToBigEndian(port);
    return endpoint;
}

} // namespace

TEST_F(PeerTest, BothEndsKnowEachOther)
{
    connectTo(QHostAddress(QHostAddress::LocalHost));
    accept();
    expectThatBothEndsKnowEachOther();
}

TEST_F(PeerTest, BothEndsOfAnIPv6ConnectionKnowEachOther)
{
    if (!hasIpv6())
        GTEST_SKIP() << "this system has no IPv6";
    connectTo(QHostAddress(QHostAddress::LocalHostIPv6));
    accept();
    expectThatBothEndsKnowEachOther();
}

TEST_F(PeerTest, AnIPv6SocketMayUseAnIPv4Connection)
{
    if (!hasIpv6Sockets())
        GTEST_SKIP() << "this system has no IPv6";
    ASSERT_TRUE(server.listen(QHostAddress::Any));
    client.connectToHost(QHostAddress(QStringLiteral("::ffff:127.0.0.1")), server.serverPort());
    ASSERT_TRUE(client.waitForConnected(support::deadlineMs));
    accept();
    EXPECT_EQ(platform::peerOf(client.socketDescriptor()).user, platform::ownUser());
    EXPECT_EQ(platform::peerOf(accepted->socketDescriptor()).user, platform::ownUser());
}

TEST_F(PeerTest, AnotherUserIsFound)
{
    if (!support::canActForUsers())
        GTEST_SKIP() << "only root can create sockets of other users";
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    {
        const AsUser other(firstUser);
        client.connectToHost(QHostAddress::LocalHost, server.serverPort());
        ASSERT_TRUE(client.waitForConnected(support::deadlineMs));
    }
    accept();
    const Peer peer = platform::peerOf(accepted->socketDescriptor());
    EXPECT_EQ(peer.user, std::to_string(firstUser));
    EXPECT_EQ(platform::processOf(peer).id, 0U) << "that user has no process with this socket";
    EXPECT_EQ(platform::peerOf(client.socketDescriptor()).user, platform::rootUser());
}

TEST_F(PeerTest, BeforeTheConnectionIsAcceptedTheListenerCounts)
{
    if (!support::canActForUsers())
        GTEST_SKIP() << "only root can create sockets of other users";
    for (const auto host : {QHostAddress::LocalHost, QHostAddress::AnyIPv4, QHostAddress::Any}) {
        {
            const AsUser other(firstUser);
            ASSERT_TRUE(server.listen(host));
        }
        client.connectToHost(QHostAddress::LocalHost, server.serverPort());
        ASSERT_TRUE(client.waitForConnected(support::deadlineMs));
        EXPECT_EQ(platform::peerOf(client.socketDescriptor()).user, std::to_string(firstUser)) << host;
        const platform::Endpoint there = endpoint(server.serverPort());
        for (const auto& lookUp : {&platform::lookUpByNetlink, &platform::lookUpInProc})
            EXPECT_EQ(lookUp(there, platform::Endpoint()).socket.value().user, firstUser) << host;
        client.abort();
        server.close();
    }
}

// The kernel shows the other end of such a connection as root's.
TEST_F(PeerTest, APeerThatHasClosedItsEndIsUnknown)
{
    connectTo(QHostAddress::LocalHost);
    accept();
    client.disconnectFromHost();
    const Peer peer = platform::peerOf(accepted->socketDescriptor());
    EXPECT_FALSE(peer.user);
    EXPECT_EQ(platform::processOf(peer).id, 0U);
}

TEST_F(PeerTest, APeerThatHasResetTheConnectionIsUnknown)
{
    connectTo(QHostAddress::LocalHost);
    accept();
    resetOnClose(client);
    client.abort();
    EXPECT_FALSE(platform::peerOf(accepted->socketDescriptor()).user);
}

TEST_F(PeerTest, OnlyAConnectedSocketHasAPeer)
{
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    EXPECT_FALSE(platform::peerOf(server.socketDescriptor()).user);
    EXPECT_FALSE(platform::peerOf(-1).user);
    QFile file(QStringLiteral("/dev/null"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(platform::peerOf(file.handle()).user);
}

TEST_F(PeerTest, NetlinkAndProcAgree)
{
    if (!support::canActForUsers())
        GTEST_SKIP() << "only root can create sockets of other users";
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    {
        const AsUser other(firstUser);
        client.connectToHost(QHostAddress::LocalHost, server.serverPort());
        ASSERT_TRUE(client.waitForConnected(support::deadlineMs));
    }
    const platform::Endpoint here = endpoint(client.localPort());
    const platform::Endpoint there = endpoint(server.serverPort());
    for (const auto& lookUp : {&platform::lookUpByNetlink, &platform::lookUpInProc}) {
        const platform::Answer connected = lookUp(here, there);
        ASSERT_TRUE(connected.isAnswered && connected.socket);
        EXPECT_EQ(connected.socket->user, firstUser);
        EXPECT_NE(connected.socket->inode, 0U);
        EXPECT_EQ(connected.socket->state, 1);
        const platform::Answer unaccepted = lookUp(there, here);
        ASSERT_TRUE(unaccepted.isAnswered && unaccepted.socket);
        EXPECT_EQ(unaccepted.socket->inode, 0U);
        const platform::Answer listening = lookUp(there, platform::Endpoint());
        ASSERT_TRUE(listening.isAnswered && listening.socket);
        EXPECT_EQ(listening.socket->user, geteuid());
        EXPECT_EQ(listening.socket->state, 10);
        const platform::Answer absent = lookUp(here, here);
        EXPECT_TRUE(absent.isAnswered);
        EXPECT_FALSE(absent.socket);
    }
}

namespace {

/// Two local sockets, connected with each other.
class LocalPair
{
public:
    LocalPair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, m_sockets), 0); }
    ~LocalPair()
    {
        close(m_sockets[0]);
        close(m_sockets[1]);
    }
    LocalPair(const LocalPair&) = delete;
    LocalPair& operator=(const LocalPair&) = delete;

    int end() const { return m_sockets[0]; }

private:
    int m_sockets[2] = {-1, -1};
};

/// This thread alone.
void actAs(uid_t user)
{
    ASSERT_EQ(syscall(SYS_setresuid, -1, user, -1), 0);
}

} // namespace

TEST(LocalPeer, IsTheUserThatConnected)
{
    EXPECT_EQ(platform::localPeerUser(LocalPair().end()), platform::ownUser());
    if (!support::canActForUsers())
        GTEST_SKIP() << "only root can act for other users";
    actAs(firstUser);
    const LocalPair pair;
    actAs(0);
    EXPECT_EQ(platform::localPeerUser(pair.end()), std::to_string(firstUser));
}

TEST_F(PeerTest, ANetworkSocketHasNoLocalPeer)
{
    connectTo(QHostAddress::LocalHost);
    accept();
    EXPECT_FALSE(platform::localPeerUser(accepted->socketDescriptor()));
    EXPECT_FALSE(platform::localPeerUser(-1));
}

TEST(Users, OnlyANumberIsAnIdentifier)
{
    EXPECT_TRUE(platform::isUserId("4711"));
    for (const char* text : {"", "root", "unknown", "-1", "4294967295", "47 11"})
        EXPECT_FALSE(platform::isUserId(text)) << text;
}

TEST(Users, HaveNamesAndNumbers)
{
    EXPECT_EQ(platform::userNamed("root"), platform::rootUser());
    EXPECT_EQ(platform::userNamed("4711"), "4711") << "without a name";
    EXPECT_EQ(platform::userNamed("004711"), "4711");
    EXPECT_EQ(platform::userNamed("4294967294"), "4294967294");
    for (const char* text :
         {"", " ", "no-such-user", "-1", "+1", "0x1", "4294967295", "99999999999999999999"})
        EXPECT_FALSE(platform::userNamed(text)) << text;
    EXPECT_EQ(platform::ownUser(), std::to_string(geteuid()));
}
