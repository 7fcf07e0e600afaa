// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QLockFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

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

    /// Why a second server cannot listen there.
    QString listenError(const QString& where)
    {
        ControlServer second(clock, [](const QByteArray&, const User&) { return ControlReply{}; });
        return second.listen(where).text();
    }

    static sockaddr_un addressOf(const QString& path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path - 1);
        return address;
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

    static constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
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

TEST_F(ControlServerTest, AStalledPeerIsClosed)
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

// Applications make the document long, and so cut it for the operator.
TEST_F(ControlServerTest, AReadingPeerMayTakeLongerThanTheTimeForOnePart)
{
    const auto socket = open();
    socket->setReadBufferSize(100'000);
    socket->write("long\n");
    QByteArray text;
    EXPECT_TRUE(runUntil([&] {
        const QByteArray read = socket->readAll();
        clock.advance(read.size() * ControlConnection::requestMs / 400'000);
        text += read;
        return isClosed(*socket);
    }));
    EXPECT_GT(clock.elapsedMs(), 2 * ControlConnection::requestMs);
    EXPECT_EQ(text.size(), 6 + 1'000'000);
}

TEST_F(ControlServerTest, PeersAreLimited)
{
    std::vector<std::unique_ptr<QLocalSocket>> silent;
    for (size_t i = 0; i < ControlServer::maxConnections; ++i)
        silent.push_back(open());
    QCoreApplication::processEvents();
    const QByteArray busy = "{\"error\":\"the agent is busy with 8 other requests; try again\"}\n";
    EXPECT_EQ(ask("what\n"), busy);
    EXPECT_TRUE(requests.empty());
    silent.pop_back();
    EXPECT_TRUE(runUntil([&] { return ask("what\n") != busy; }));
}

TEST_F(ControlServerTest, RefusedPeersAreLimited)
{
    std::vector<std::unique_ptr<QLocalSocket>> silent;
    for (size_t i = 0; i < ControlServer::maxConnections + ControlServer::maxRefused; ++i) {
        silent.push_back(open());
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(ask("what\n"), "");
    clock.advance(ControlConnection::requestMs);
    EXPECT_TRUE(runUntil([&] { return ask("what\n").startsWith("user "); }));
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

// The second agent could find no socket, and then replace the one that the first had made meanwhile.
TEST_F(ControlServerTest, AnAgentWaitsForAStartingOne)
{
    const QString next = directory.filePath(QStringLiteral("next"));
    QLockFile starting(next + QStringLiteral(".lock"));
    ASSERT_TRUE(starting.lock());
    EXPECT_EQ(listenError(next), QStringLiteral("another agent is starting or ending there"));
    EXPECT_FALSE(QFile::exists(next));
    starting.unlock();
    EXPECT_EQ(listenError(next), QString());
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files | QDir::System),
              QStringList{QStringLiteral("control")});
}

// One agent could remove the socket of another that started or ended at the same time.
TEST_F(ControlServerTest, AListeningAgentCanBeReachedWhileOthersStartAndEnd)
{
    const QString next = directory.filePath(QStringLiteral("next"));
    std::atomic<int> served{0};
    std::atomic<int> unreachable{0};
    const auto startAndEnd = [&] {
        support::ManualClock itsClock;
        for (int i = 0; i < 20; ++i) {
            ControlServer another(itsClock, [](const QByteArray&, const User&) { return ControlReply{}; });
            if (another.listen(next))
                continue;
            ++served;
            QLocalSocket operators;
            operators.connectToServer(next);
            unreachable += operators.waitForConnected() ? 0 : 1;
        }
    };
    std::vector<std::unique_ptr<QThread>> agents;
    for (int i = 0; i < 3; ++i) {
        agents.emplace_back(QThread::create(startAndEnd));
        agents.back()->start();
    }
    for (const auto& each : agents)
        each->wait();
    EXPECT_GT(served, 0);
    EXPECT_EQ(unreachable, 0);
}

TEST_F(ControlServerTest, AFileIsNotReplaced)
{
    QFile file(directory.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ControlServer second(clock, [](const QByteArray&, const User&) { return ControlReply{}; });
    EXPECT_TRUE(second.listen(file.fileName()));
    EXPECT_TRUE(file.exists());
}

// The probe of a second agent timed out, and the second agent took the path.
TEST_F(ControlServerTest, ABusyAgentKeepsItsPath)
{
    std::vector<int> waiting; // as many as the system lets wait for an agent that does not accept
    const auto connectOne = [&] {
        waiting.push_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0));
        const sockaddr_un address = addressOf(path());
        return ::connect(waiting.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    };
    while (connectOne()) {
    }
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(listenError(path()), QStringLiteral("another agent listens there"));
    EXPECT_TRUE(runUntil(connectOne)) << "the first agent accepts again";
    std::for_each(waiting.begin(), waiting.end(), &::close);
}

// A connection to a pipe or a device is refused as one to a left socket is.
TEST_F(ControlServerTest, APipeIsNotReplaced)
{
    const QString pipe = directory.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    EXPECT_EQ(listenError(pipe), QStringLiteral("it exists and is not a socket"));
    EXPECT_TRUE(QFile::exists(pipe));
}

TEST_F(ControlServerTest, ASymbolicLinkIsNotReplaced)
{
    const QString link = directory.filePath(QStringLiteral("link"));
    ASSERT_TRUE(QFile::link(directory.filePath(QStringLiteral("nowhere")), link));
    EXPECT_EQ(listenError(link), QStringLiteral("it exists and is not a socket"));
}

TEST_F(ControlServerTest, ADatagramSocketIsNotReplaced)
{
    const QString journal = directory.filePath(QStringLiteral("journal"));
    const int other = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    const sockaddr_un address = addressOf(journal);
    ASSERT_EQ(::bind(other, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_NE(listenError(journal), QString());
    EXPECT_TRUE(QFile::exists(journal));
    ::close(other);
}

TEST_F(ControlServerTest, ADirectoryOpenToOthersIsRefused)
{
    for (const QFile::Permission open : {QFile::WriteGroup, QFile::WriteOther}) {
        ASSERT_TRUE(QFile::setPermissions(directory.path(), ownerOnly | open));
        EXPECT_EQ(listenError(directory.filePath(QStringLiteral("next"))),
                  QStringLiteral("users other than root and the agent's own may write in its directory"));
    }
    ASSERT_TRUE(QFile::setPermissions(directory.path(), ownerOnly));
    EXPECT_EQ(listenError(directory.filePath(QStringLiteral("next"))), QString());
}

// The server made it, but no program could connect.
TEST_F(ControlServerTest, APathTooLongForASocketIsRefused)
{
    const QString fits = directory.filePath(QStringLiteral("x")).leftJustified(100, QLatin1Char('x'));
    EXPECT_EQ(listenError(fits + QLatin1Char('x')), QStringLiteral("it is longer than 100 bytes"));
    EXPECT_EQ(listenError(fits), QString());
}

TEST_F(ControlServerTest, AMissingDirectoryIsNamed)
{
    EXPECT_EQ(listenError(directory.filePath(QStringLiteral("none/control"))),
              QStringLiteral("its directory does not exist"));
}

TEST_F(ControlServerTest, TheSocketOfAKilledAgentIsReplaced)
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
