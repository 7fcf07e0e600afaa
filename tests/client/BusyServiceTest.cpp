// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTcpSocket>

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "base/ComConnectionSocket.h"
#include "base/Logging.h"
#include "base/wire/Protocol.h"
#include "client/Client.h"
#include "support/FakeService.h"
#include "support/LibraryLog.h"
#include "support/Oids.h"
#include "support/Publications.h"
#include "support/RunUntil.h"
#include "support/ShownCells.h"

using support::below;
using support::FakeService;
using support::LibraryLog;
using support::runUntil;
using support::set;
using support::ShownCells;
using support::unset;
using support::withTrap;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr const char* busyText = "The service does not read fast enough: further values wait.";
constexpr const char* droppedText = "An answer to a SET was dropped";
constexpr const char* caughtUpText = "The service has caught up: all values are sent.";

constexpr int maxPendingBytes = 20000;

bool isOf(const std::string& oid, const std::string& line)
{
    return line.rfind(oid + " ", 0) == 0;
}

/// A client in the thread of the test, beside a service that stops reading.
class BusyService : public testing::Test
{
protected:
    inline static const std::string fillerOid = "0.1"; // of the values that make the service busy
    inline static const std::string markOid = "99.99"; // of the value that is sent last

    BusyService()
    {
        base::startLogging();
        qputenv("VIGIL_SERVICE_PORT", QByteArray::number(service.port()));
        client->init();
        limitBuffers();
    }

    ~BusyService() override
    {
        client.reset();
        base::stopLogging();
    }

    base::ComConnectionSocket& connection() { return *client->findChild<base::ComConnectionSocket*>(); }

    /// Small buffers are full soon.
    void limitBuffers()
    {
        connection().setMaxPendingBytes(maxPendingBytes);
        connection().socket()->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 4096);
    }

    /// Returns once the connection has refused a value and the system has taken no more for this time.
    void stall(int standstillMs = 100)
    {
        service.stopReading();
        const QString filler(10000, QLatin1Char('x'));
        while (client->sendValue(below(fillerOid), filler, false) ||
               connection().waitForBytesWritten(standstillMs)) {
        }
    }

    /// Lets the service read, and returns what it has read since the last call.
    std::vector<std::string> readAll()
    {
        service.resumeReading();
        const std::string mark = set(markOid, ++m_mark);
        client->sendValue(below(markOid), m_mark, false);
        EXPECT_TRUE(runUntil([&] {
            const std::vector<FakeService::Frame> frames = service.frames();
            return !frames.empty() && support::describe(frames.back()) == mark;
        }));
        std::vector<std::string> lines;
        const std::vector<FakeService::Frame> frames = service.frames();
        for (; m_reported < frames.size(); ++m_reported) {
            const std::string line = support::describe(frames[m_reported]);
            if (!isOf(fillerOid, line) && !isOf(markOid, line))
                lines.push_back(line);
        }
        return lines;
    }

    /// Sends a SET to validate. Returns once the client has answered.
    void ask(const std::string& oid, int value)
    {
        bool isHandled = false;
        const auto watch =
            QObject::connect(&connection(), &base::ComConnectionSocket::signal_sigdb_dataReceived,
                             [&isHandled] { isHandled = true; });
        service.send(base::SnmpIntType, support::encodedInt(oid, value), base::Validation);
        EXPECT_TRUE(runUntil([&] { return isHandled; }));
        QObject::disconnect(watch);
    }

    void reconnect()
    {
        service.closeConnection();
        EXPECT_TRUE(runUntil([&] { return connection().socket() == nullptr; }));
        client->onTimerReconnect();
        limitBuffers();
    }

    /// exit() takes at least and less than these times. A pause of a virtual machine counts as well, so it
    /// may try three times.
    void expectExitWithin(qint64 leastMs, qint64 limitMs, const std::function<void()>& prepare)
    {
        QElapsedTimer elapsed;
        qint64 exitMs = -1;
        for (int attempt = 0; attempt < 3 && (exitMs < leastMs || exitMs >= limitMs); ++attempt) {
            service.resumeReading();
            client = std::make_unique<::Client>();
            client->init();
            limitBuffers();
            prepare();
            elapsed.start();
            client->exit();
            exitMs = elapsed.elapsed();
        }
        EXPECT_GE(exitMs, leastMs);
        EXPECT_LT(exitMs, limitMs);
    }

    LibraryLog log;
    FakeService service;
    std::unique_ptr<::Client> client = std::make_unique<::Client>();

private:
    std::size_t m_reported = 0;
    int m_mark = 0;
};

TEST_F(BusyService, GetsRefusedValuesOnceItReads)
{
    stall();
    EXPECT_FALSE(client->sendValue(below("2"), 5, false));
    EXPECT_FALSE(client->sendValue(below("1"), QStringLiteral("text"), false));
    EXPECT_FALSE(client->sendValue(below("3"), true, false));
    EXPECT_FALSE(client->sendValue(below("4"), 0.5, false));
    EXPECT_THAT(readAll(), ElementsAreArray({set("1", "text"), set("2", 5), set("3", 1), set("4", "0.5")}));
}

TEST_F(BusyService, GetsTheLastValueOfEachIdentifier)
{
    stall();
    for (int value = 0; value < 100; ++value)
        client->sendValue(below("1"), value, false);
    EXPECT_THAT(readAll(), ElementsAreArray({set("1", 99)}));
}

TEST_F(BusyService, GetsRefusedWithdrawals)
{
    client->sendValue(below("1"), 5, false);
    stall();
    client->unsetOid(below("1"));
    EXPECT_THAT(readAll(), ElementsAreArray({set("1", 5), unset("1")}));
}

TEST_F(BusyService, GetsTheWithdrawalOfATreeOnceAndNothingOfItsValues)
{
    client->sendValue(below("1.1"), 5, false);
    stall();
    client->sendValue(below("1.1"), 6, false);
    client->sendValue(below("1.2"), 6, false);
    client->unsetOidTree(below("1"));
    EXPECT_THAT(readAll(), ElementsAreArray({set("1.1", 5), unset("1")}));
}

TEST_F(BusyService, GetsTheWithdrawalOfATreeThatLeavesNothingInTheCache)
{
    client->sendValue(below("1"), 5, false);
    stall();
    client->unsetOidTree(below("1"));
    client->unsetOidTree(below("1"));
    EXPECT_THAT(readAll(), ElementsAreArray({set("1", 5), unset("1")}));
}

TEST_F(BusyService, GetsValuesPublishedAfterTheWithdrawalOfTheirTree)
{
    client->sendValue(below("1.1"), 5, false);
    stall();
    client->unsetOidTree(below("1"));
    service.resumeReading();
    client->sendValue(below("1.1"), 6, false);
    EXPECT_THAT(readAll(), ElementsAreArray({set("1.1", 5), unset("1"), set("1.1", 6)}));
}

TEST_F(BusyService, GetsTheWithdrawalOfATreeBeforeANewValueOfItsRoot)
{
    client->sendValue(below("1.1"), 5, false);
    stall();
    client->unsetOidTree(below("1"));
    client->sendValue(below("1"), 6, true);
    EXPECT_THAT(readAll(), ElementsAreArray({set("1.1", 5), unset("1"), withTrap(set("1", 6))}));
}

TEST_F(BusyService, GetsTheNotificationThatAnEarlierValueWanted)
{
    stall();
    client->sendValue(below("1"), 5, true);
    client->sendValue(below("1"), 6, false);
    client->sendValue(below("2"), 7, false);
    EXPECT_THAT(readAll(), ElementsAreArray({withTrap(set("1", 6)), set("2", 7)}));
}

TEST_F(BusyService, IsReportedOnceAndOnceItHasCaughtUp)
{
    stall();
    const int times = log.count(busyText);
    client->sendValue(below("1"), 5, false);
    client->unsetOid(below("1"));
    EXPECT_EQ(log.count(busyText), times);
    EXPECT_EQ(log.count(caughtUpText), times - 1);
    readAll();
    EXPECT_EQ(log.count(busyText), times);
    EXPECT_EQ(log.count(caughtUpText), times);
}

TEST_F(BusyService, GetsValuesAtOnceAfterItHasCaughtUp)
{
    stall();
    readAll();
    EXPECT_TRUE(client->sendValue(below("2"), 5, false));
    EXPECT_TRUE(client->sendValue(below("1"), 6, true));
    EXPECT_THAT(readAll(), ElementsAreArray({set("2", 5), withTrap(set("1", 6))}));
}

TEST_F(BusyService, GetsTheWholeCacheAfterALoss)
{
    client->sendValue(below("2"), 5, false);
    stall();
    client->sendValue(below("1"), 6, true);
    reconnect();
    EXPECT_EQ(log.count("The connection ended with 2 values waiting, 1 of them with a notification."), 1);
    const std::vector<std::string> lines = readAll();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_THAT(std::vector<std::string>(lines.end() - 2, lines.end()),
                ElementsAreArray({set("1", 6), set("2", 5)}));
}

TEST_F(BusyService, GetsAReplayLargerThanTheBuffers)
{
    service.stopReading();
    constexpr int count = 5000;
    std::vector<std::string> expected;
    for (int i = 0; i < count; ++i) {
        client->sendValue(below("1") + static_cast<unsigned int>(i), i, false);
        expected.push_back(set("1." + std::to_string(i), i));
    }
    service.resumeReading();
    readAll();
    reconnect();
    EXPECT_EQ(readAll(), expected);
}

// --- Answers

TEST_F(BusyService, GetsTheAnswerToASetBeforeTheValuesThatWait)
{
    stall();
    client->sendValue(below("1"), 5, false);
    ask("2", 1);
    service.resumeReading();
    EXPECT_THAT(readAll(), ElementsAre("answer 1 to 2 = 1", set("1", 5)));
    EXPECT_EQ(log.count(droppedText), 0);
}

TEST_F(BusyService, GetsNoAnswersWithoutEndAndTheLogSaysSo)
{
    stall();
    constexpr int sizeOfAnswer = 200;
    for (int i = 0; log.count(droppedText) == 0 && i < maxPendingBytes; ++i)
        ask("2", i);
    EXPECT_EQ(log.count(droppedText), 1);
    EXPECT_LE(connection().socket()->bytesToWrite(), 2 * maxPendingBytes + sizeOfAnswer);
}

// --- The end

TEST_F(BusyService, GetsAllValuesBeforeTheConnectionIsClosed)
{
    stall();
    client->sendValue(below("2"), 5, false);
    client->unsetOid(below("1"));
    service.resumeReading();
    client->exit();
    ASSERT_TRUE(service.waitForDisconnections(1));
    const std::vector<FakeService::Frame> frames = service.frames();
    ASSERT_GE(frames.size(), 2u);
    EXPECT_EQ(support::describe(frames[frames.size() - 2]), unset("1"));
    EXPECT_EQ(support::describe(frames.back()), set("2", 5));
}

TEST_F(BusyService, IsGivenUpAfterASecondWithoutReading)
{
    constexpr int untilTheLastByteMs = 500; // the system fills a last gap of the peer's buffer after 200 ms
    expectExitWithin(900, 2000, [this] { stall(untilTheLastByteMs); });
}

TEST_F(BusyService, IsGivenUpAfterTwoSecondsOfSlowReading)
{
    constexpr int backlog = 10000000; // takes the reader half a minute
    constexpr int slice = 70000;      // the system reports progress in steps of about 64 kB
    constexpr int pauseMs = 200;
    expectExitWithin(1900, 8000, [this] {
        connection().setMaxPendingBytes(backlog);
        stall();
        service.readSlowly(slice, pauseMs);
    });
}

// --- Model

class RandomStalls : public BusyService, public testing::WithParamInterface<unsigned int>
{
protected:
    int random(int limit) { return static_cast<int>(m_random() % static_cast<unsigned int>(limit)); }

    /// One of 5 trees with 20 cells each. Now and then the root has a value, too.
    std::string randomCell() { return randomTree() + "." + std::to_string(1 + random(20)); }
    std::string randomNode() { return random(4) == 0 ? randomTree() : randomCell(); }
    std::string randomTree() { return "1." + std::to_string(1 + random(5)); }

    void step()
    {
        const int choice = random(1000);
        if (choice < 600)
            publishNumber();
        else if (choice < 750)
            publishText();
        else if (choice < 900)
            withdraw();
        else if (choice < 940)
            withdrawTree();
        else if (choice < 960)
            service.stopReading();
        else if (choice < 980)
            service.resumeReading();
        else if (choice < 999)
            QCoreApplication::processEvents();
        else
            reconnect();
    }

    void publishNumber()
    {
        const std::string oid = randomNode();
        const int value = random(1000000);
        client->sendValue(below(oid), value, random(2) == 0);
        said.write(oid, set(oid, value));
    }

    void publishText()
    {
        const std::string oid = randomCell();
        const std::string value(static_cast<std::size_t>(random(20000)), static_cast<char>('a' + random(26)));
        client->sendValue(below(oid), QString::fromStdString(value), random(2) == 0);
        said.write(oid, set(oid, value));
    }

    void withdraw()
    {
        const std::string oid = randomCell();
        client->unsetOid(below(oid));
        said.remove(oid);
    }

    void withdrawTree()
    {
        const std::string oid = random(2) == 0 ? randomTree() : randomCell();
        client->unsetOidTree(below(oid));
        said.remove(oid);
    }

    ShownCells said;

private:
    std::mt19937 m_random{GetParam()};
};

TEST_P(RandomStalls, LeaveTheServiceWithWhatTheApplicationSaidLast)
{
    stall(); // the load of the machine decides how often the steps do
    for (int i = 0; i < 5000; ++i)
        step();
    readAll();
    ShownCells shown(service.frames());
    shown.remove(fillerOid);
    shown.remove(markOid);
    EXPECT_EQ(shown.cells(), said.cells());
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomStalls, testing::Range(1u, 5u));

} // namespace
