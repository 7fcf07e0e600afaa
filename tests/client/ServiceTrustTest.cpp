// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The client beside services of other users.

#include "client/ServiceTrust.h"

#include <gtest/gtest.h>

#include <QTcpServer>
#include <QTcpSocket>

#include <sys/resource.h>
#include <unistd.h>

#include <future>
#include <memory>
#include <thread>

#include "base/Logging.h"
#include "client/Client.h"
#include "support/AsUser.h"
#include "support/Deadline.h"
#include "support/EnvironmentVariable.h"
#include "support/FakeService.h"
#include "support/LibraryLog.h"

using support::AsUser;
using support::EnvironmentVariable;
using support::firstUser;

namespace {

constexpr const char* connectedText = "[Client::onConnected] Connected to snmp service.";
constexpr const char* refusedText =
    " belongs to user 51001, not to root, to this user, to \"vigil-agent\" or to "
    "VIGIL_SERVICE_USER. Not connecting.";

/// While it lives, the process has one free descriptor.
class OneFreeDescriptor
{
public:
    OneFreeDescriptor()
    {
        getrlimit(RLIMIT_NOFILE, &m_previous);
        const int lowestFree = dup(STDERR_FILENO);
        close(lowestFree);
        rlimit limit = m_previous;
        limit.rlim_cur = static_cast<rlim_t>(lowestFree) + 1;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~OneFreeDescriptor() { setrlimit(RLIMIT_NOFILE, &m_previous); }
    OneFreeDescriptor(const OneFreeDescriptor&) = delete;
    OneFreeDescriptor& operator=(const OneFreeDescriptor&) = delete;

private:
    rlimit m_previous{};
};

/// A client in the thread of the test, with a value to send.
class ServiceTrustTest : public testing::Test
{
protected:
    ServiceTrustTest() { base::startLogging(); }

    ~ServiceTrustTest() override
    {
        client.reset();
        base::stopLogging();
    }

    void connectTo(quint16 port)
    {
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(port));
        client = std::make_unique<Client>();
        client->sendValue(Oid::fromStdString("1.3.6.1.4.1.32473.5.1"), 1, false);
        client->init();
    }

    support::LibraryLog log;
    std::unique_ptr<Client> client;
};

/// The same, where the tests may act for other users.
class ServiceOfAnotherUser : public ServiceTrustTest
{
protected:
    void SetUp() override
    {
        if (!support::canActForUsers())
            GTEST_SKIP() << "only root can create sockets of other users";
    }

    /// Listens as another user, and never accepts.
    bool listen(quint16 port = 0)
    {
        const AsUser other(firstUser);
        return server.listen(QHostAddress::LocalHost, port);
    }

    QTcpServer server;
};

} // namespace

TEST_F(ServiceTrustTest, ABadVariableIsLoggedAndAddsNoOne)
{
    support::FakeService service;
    const EnvironmentVariable user("VIGIL_SERVICE_USER", "no-such-user");
    connectTo(service.port());
    EXPECT_TRUE(
        log.contains("___ERROR___ VIGIL_SERVICE_USER is \"no-such-user\", which names no user. It adds "
                     "no one."));
    EXPECT_TRUE(log.contains(connectedText)) << "the service is of this user";
}

TEST_F(ServiceOfAnotherUser, IsRefusedWhileItHasNotAccepted)
{
    ASSERT_TRUE(listen());
    connectTo(server.serverPort());
    EXPECT_EQ(log.count(refusedText), 1);
    EXPECT_FALSE(log.contains(connectedText));
}

TEST_F(ServiceOfAnotherUser, ReceivesNotAByte)
{
    std::promise<quint16> port;
    auto service = std::async(std::launch::async, [&port] {
        const AsUser other(firstUser);
        QTcpServer squatter;
        squatter.listen(QHostAddress::LocalHost);
        port.set_value(squatter.serverPort());
        QByteArray received;
        if (squatter.waitForNewConnection(support::deadlineMs)) {
            QTcpSocket* connection = squatter.nextPendingConnection();
            while (connection->waitForReadyRead(support::deadlineMs)) {
            }
            received = connection->readAll();
        }
        return received;
    });
    connectTo(port.get_future().get());
    EXPECT_TRUE(service.get().isEmpty());
    EXPECT_FALSE(log.contains(connectedText));
}

TEST_F(ServiceOfAnotherUser, IsLoggedOnceAMinute)
{
    ASSERT_TRUE(listen());
    connectTo(server.serverPort());
    for (int attempt = 0; attempt < 3; ++attempt)
        client->onTimerReconnect();
    EXPECT_EQ(log.count(refusedText), 1);
    EXPECT_EQ(log.count("CCS::LOG: NOT CONNECTED"), 4);
}

// The sanitizer needs descriptors of its own to look at objects.
#ifndef __SANITIZE_ADDRESS__
TEST_F(ServiceOfAnotherUser, IsRefusedWhileNoDescriptorIsLeftToAskWith)
{
    ASSERT_TRUE(listen());
    {
        const OneFreeDescriptor left; // for the connection
        connectTo(server.serverPort());
    }
    EXPECT_TRUE(server.waitForNewConnection(support::deadlineMs)) << "this tests nothing";
    EXPECT_FALSE(Client::isAnyConnected());
    EXPECT_FALSE(log.contains(connectedText));
}
#endif

TEST_F(ServiceOfAnotherUser, IsTrustedIfTheVariableNamesIt)
{
    const EnvironmentVariable user("VIGIL_SERVICE_USER", "51001");
    ASSERT_TRUE(listen());
    connectTo(server.serverPort());
    EXPECT_TRUE(log.contains(connectedText));
    EXPECT_FALSE(log.contains(refusedText));
}

TEST_F(ServiceOfAnotherUser, MakesRoomForTheRealOne)
{
    ASSERT_TRUE(listen());
    const quint16 port = server.serverPort();
    connectTo(port);
    server.close();
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost, port));
    client->onTimerReconnect();
    EXPECT_TRUE(log.contains(connectedText));
}
