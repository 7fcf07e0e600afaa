// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <vector>

#include "agent/control/ControlServer.h"
#include "support/ManualClock.h"
#include "support/RunUntil.h"

using agent::ControlConnection;
using agent::ControlReply;
using agent::ControlServer;
using agent::Turn;
using agent::User;
using support::runUntil;

namespace {

/// A long text, and how much of it has been made.
class CountedPieces : public agent::TextPieces
{
public:
    CountedPieces(int pieces, int& made) : m_left(pieces), m_made(made) {}

    bool appendTo(QByteArray& text) override
    {
        ++m_made;
        text += QByteArray(1000, 'x');
        return --m_left > 0;
    }

private:
    int m_left;
    int& m_made;
};

class ControlServerTest : public testing::Test
{
protected:
    void SetUp() override { listen(); }

    void listen()
    {
        const agent::Error error = server.listen(path());
        ASSERT_FALSE(error) << qPrintable(error.text());
    }

    QString path() const { return directory.filePath(QStringLiteral("control")); }

    std::unique_ptr<QLocalSocket> open()
    {
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(path());
        EXPECT_TRUE(socket->waitForConnected());
        return socket;
    }

    static bool isClosed(const QLocalSocket& socket)
    {
        return socket.state() == QLocalSocket::UnconnectedState;
    }

    /// The whole reply.
    QByteArray ask(const QByteArray& line)
    {
        const auto socket = open();
        socket->write(line);
        EXPECT_TRUE(runUntil([&] { return isClosed(*socket); }));
        return socket->readAll();
    }

    ControlReply reply(const QByteArray& line, const User& user)
    {
        requests.push_back(line);
        if (line == "long")
            return {"start ", std::make_unique<CountedPieces>(pieces, made)};
        return {"user " + QByteArray::fromStdString(user.value_or(std::string())) + '\n', nullptr};
    }

    const QTemporaryDir directory;
    support::ManualClock clock;
    User peer = platform::ownUser();
    std::vector<QByteArray> requests;
    int pieces = 1'000;
    int made = 0;
    ControlServer server{clock,
                         [this](const QByteArray& line, const User& user) { return reply(line, user); },
                         [this](std::intptr_t) { return peer; }};
};

} // namespace

TEST_F(ControlServerTest, AnswersALineAndCloses)
{
    EXPECT_EQ(ask("what\nmore\n"), "user " + QByteArray::fromStdString(*platform::ownUser()) + '\n');
    EXPECT_EQ(requests, std::vector<QByteArray>{"what"});
}

TEST_F(ControlServerTest, ALineMayComeInParts)
{
    const auto socket = open();
    for (const char* part : {"wh", "at", "\n"}) {
        socket->write(part);
        EXPECT_TRUE(socket->waitForBytesWritten());
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(runUntil([&] { return isClosed(*socket); }));
    EXPECT_EQ(requests, std::vector<QByteArray>{"what"});
}

TEST_F(ControlServerTest, OnlyRootAndTheAgentsUserMayAsk)
{
    for (const User& user : {User("51001"), User()}) {
        peer = user;
        EXPECT_EQ(ask("what\n"), "");
    }
    EXPECT_TRUE(requests.empty());
    peer = platform::rootUser();
    EXPECT_EQ(ask("what\n"), "user 0\n");
}

TEST_F(ControlServerTest, TheFileIsForItsUserAlone)
{
    const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
    EXPECT_FALSE(QFile::permissions(path()) & others);
}

TEST_F(ControlServerTest, AnEndlessLineIsRefused)
{
    EXPECT_EQ(ask(QByteArray(ControlConnection::maxRequest + 1, 'x')),
              "{\"error\":\"the request is too long\"}\n");
    EXPECT_TRUE(requests.empty());
}

TEST_F(ControlServerTest, ASilentPeerIsClosed)
{
    const auto socket = open();
    socket->write("wha");
    socket->flush();
    QCoreApplication::processEvents();
    clock.advance(ControlConnection::requestMs);
    EXPECT_TRUE(runUntil([&] { return isClosed(*socket); }));
    EXPECT_TRUE(requests.empty());
}

TEST_F(ControlServerTest, APeerThatDoesNotReadIsClosed)
{
    pieces = 1'000'000;
    const auto socket = open();
    socket->setReadBufferSize(1);
    socket->write("long\n");
    EXPECT_TRUE(runUntil([&] { return made > 0; }));
    int before = 0;
    EXPECT_TRUE(runUntil([&] { return std::exchange(before, made) == made; }));
    EXPECT_LT(made, 10'000) << "no more is made than it takes";
    clock.advance(ControlConnection::requestMs);
    socket->setReadBufferSize(0);
    EXPECT_TRUE(runUntil([&] {
        socket->readAll();
        return isClosed(*socket);
    }));
}

TEST_F(ControlServerTest, PeersAreLimited)
{
    std::vector<std::unique_ptr<QLocalSocket>> silent;
    for (size_t i = 0; i < ControlServer::maxConnections; ++i)
        silent.push_back(open());
    QCoreApplication::processEvents();
    EXPECT_EQ(ask("what\n"), "");
    silent.pop_back();
    EXPECT_TRUE(runUntil([&] { return ask("what\n") != ""; }));
}

TEST_F(ControlServerTest, ALongReplyComesWhole)
{
    EXPECT_EQ(ask("long\n"), "start " + QByteArray(1'000'000, 'x'));
    EXPECT_EQ(made, pieces);
}

// One turn of the event loop made as much as all readers could take.
TEST_F(ControlServerTest, ATurnMakesTheSameHoweverManyPeersRead)
{
    std::vector<std::unique_ptr<QLocalSocket>> readers;
    int closed = 0;
    for (int i = 0; i < 4; ++i) {
        readers.push_back(open());
        QObject::connect(readers.back().get(), &QLocalSocket::disconnected, [&] { ++closed; });
        readers.back()->write("long\n");
    }
    int last = 0;
    int most = 0;
    QTimer turns; // as often as the server's
    QObject::connect(&turns, &QTimer::timeout,
                     [&] { most = std::max(most, made - std::exchange(last, made)); });
    turns.start(0);
    EXPECT_TRUE(runUntil([&] { return closed == 4; }));
    EXPECT_EQ(made, 4 * pieces);
    EXPECT_LE(most, 2 * Turn::maxPieces);
}

TEST_F(ControlServerTest, TwoAgentsCannotHaveOnePath)
{
    ControlServer second(clock, [](const QByteArray&, const User&) { return ControlReply{}; });
    EXPECT_EQ(second.listen(path()).text(), QStringLiteral("another agent listens there"));
    EXPECT_EQ(ask("what\n"), "user " + QByteArray::fromStdString(*platform::ownUser()) + '\n');
}

TEST_F(ControlServerTest, AFileIsNotReplaced)
{
    QFile file(directory.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ControlServer second(clock, [](const QByteArray&, const User&) { return ControlReply{}; });
    EXPECT_TRUE(second.listen(file.fileName()));
    EXPECT_TRUE(file.exists());
}

TEST_F(ControlServerTest, ASocketLeftByAnAgentThatWasKilledIsReplaced)
{
    const QString left = directory.filePath(QStringLiteral("left"));
    ASSERT_TRUE(QFile::rename(path(), left)) << "so closing does not remove it";
    {
        ControlServer killed(clock, [](const QByteArray&, const User&) { return ControlReply{}; });
        const QString socket = directory.filePath(QStringLiteral("socket"));
        ASSERT_FALSE(killed.listen(socket));
        ASSERT_TRUE(QFile::rename(socket, path()));
    }
    ControlServer next(clock, [](const QByteArray&, const User&) { return ControlReply{"next", nullptr}; });
    const agent::Error error = next.listen(path());
    EXPECT_FALSE(error) << qPrintable(error.text());
    EXPECT_EQ(ask("what\n"), "next");
}
