// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A master under the control of the test: the agent answers it, and survives it.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "agent/netsnmp/NetSnmp.h"
#include "support/AgentProcess.h"
#include "support/FakeApplication.h"
#include "support/FakeMaster.h"
#include "support/Load.h"
#include "support/ProcessMemory.h"
#include "support/RunUntil.h"

using support::AgentProcess;
using support::FakeApplication;
using support::FakeMaster;
using support::runUntil;

namespace {

class StrangeMaster : public testing::Test
{
protected:
    const QString enterprise = QStringLiteral("1.3.6.1.4.1.32473");
    const QString first = enterprise + QStringLiteral(".5.1");  // 11
    const QString second = enterprise + QStringLiteral(".5.2"); // "text"
    const QString third = enterprise + QStringLiteral(".5.3");  // 13

    void SetUp() override
    {
        agent = std::make_unique<AgentProcess>(master.address(), QStringList{QStringLiteral("--verbose")});
        ASSERT_TRUE(agent->start()) << agent->log().constData();
        ASSERT_TRUE(master.waitForJoins(1)) << agent->log().constData();
        application = std::make_unique<FakeApplication>(agent->applicationPort());
        application->publish("5.1", 11);
        application->publish("5.2", std::string("text"));
        application->publish("5.3", 13);
        ASSERT_TRUE(agent->waitForLog("5.3 = 13")) << agent->log().constData();
    }

    void TearDown() override { EXPECT_EQ(agent->stop(), 0) << agent->log().constData(); }

    /// Sends the bytes and returns the next answer. Without one, its packet is 0.
    FakeMaster::Answer answerTo(const QByteArray& bytes)
    {
        const size_t before = master.answers().size();
        master.send(bytes);
        return master.waitForAnswers(before + 1) ? master.answers().at(before) : FakeMaster::Answer();
    }

    void expectServed()
    {
        const FakeMaster::Answer answer = answerTo(FakeMaster::get(1000, first));
        EXPECT_EQ(answer.packet, 1000u) << agent->log().constData();
        ASSERT_EQ(answer.varbinds.size(), 1u);
        EXPECT_EQ(answer.varbinds.at(0).value, QStringLiteral("11"));
    }

    void expectApplicationsServed()
    {
        application->publish("6.1", ++m_published);
        EXPECT_TRUE(agent->waitForLog("6.1 = " + QByteArray::number(m_published)))
            << agent->log().constData();
    }

    FakeMaster master;
    std::unique_ptr<AgentProcess> agent;
    std::unique_ptr<FakeApplication> application;

private:
    int m_published = 0;
};

} // namespace

TEST_F(StrangeMaster, GetsAValue)
{
    const FakeMaster::Answer answer = answerTo(FakeMaster::get(21, second));
    EXPECT_EQ(answer.packet, 21u);
    EXPECT_EQ(answer.error, 0);
    ASSERT_EQ(answer.varbinds.size(), 1u);
    EXPECT_EQ(answer.varbinds.at(0).name, second);
    EXPECT_EQ(answer.varbinds.at(0).value, QStringLiteral("text"));
}

TEST_F(StrangeMaster, GetsOneAnswerForEachOfManyRequests)
{
    QByteArray requests;
    for (quint32 packet = 1; packet <= 100; ++packet)
        requests += FakeMaster::get(packet, first);
    master.send(requests);
    ASSERT_TRUE(master.waitForAnswers(100));
    for (quint32 packet = 1; packet <= 100; ++packet)
        EXPECT_EQ(master.answers().at(packet - 1).packet, packet);
}

TEST_F(StrangeMaster, GetsNextValuesWithinItsRanges)
{
    const FakeMaster::Answer answer = answerTo(FakeMaster::getNext(
        21, {{first, QString()}, {first, third}, {first, second}, {third, third + QStringLiteral(".1")}}));
    EXPECT_EQ(answer.error, 0);
    ASSERT_EQ(answer.varbinds.size(), 4u);
    EXPECT_EQ(answer.varbinds.at(0).value, QStringLiteral("text"));
    EXPECT_EQ(answer.varbinds.at(1).name, second) << "below the end";
    EXPECT_EQ(answer.varbinds.at(1).value, QStringLiteral("text"));
    EXPECT_EQ(answer.varbinds.at(2).type, FakeMaster::endOfMibView) << "the end itself is not in the range";
    EXPECT_EQ(answer.varbinds.at(2).name, first);
    EXPECT_EQ(answer.varbinds.at(3).type, FakeMaster::endOfMibView);
    EXPECT_EQ(answer.varbinds.at(3).name, third);
}

TEST_F(StrangeMaster, GetsTheNewValueRightAfterASet)
{
    for (int value = 100; value < 110; ++value) {
        ASSERT_EQ(answerTo(FakeMaster::testSet(31, first, value)).error, 0);
        ASSERT_EQ(answerTo(FakeMaster::commitSet(32)).error, 0);
        const size_t before = master.answers().size();
        master.send(FakeMaster::cleanupSet(33) + FakeMaster::get(34, first) + FakeMaster::get(35, first));
        ASSERT_TRUE(master.waitForAnswers(before + 3));
        for (const size_t get : {before + 1, before + 2}) {
            ASSERT_EQ(master.answers().at(get).varbinds.size(), 1u) << "answers keep their order";
            EXPECT_EQ(master.answers().at(get).varbinds.at(0).value, QString::number(value));
        }
    }
}

TEST_F(StrangeMaster, IsLeftIfItDoesNotWaitForTheStepsOfASet)
{
    master.send(FakeMaster::testSet(31, first, 5) + FakeMaster::commitSet(32) + FakeMaster::cleanupSet(33));
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    ASSERT_EQ(answerTo(FakeMaster::testSet(34, first, 5)).error, 0);
    master.send(FakeMaster::commitSet(35) + FakeMaster::cleanupSet(36));
    ASSERT_TRUE(master.waitForJoins(3)) << agent->log().constData();
    expectServed();
}

// Net-SNMP's snmpd repeats a message after a second without an answer, if the agent is suspended, say. The
// agent took the second one for a further step and left.
TEST_F(StrangeMaster, MayRepeatTheStepsOfASet)
{
    for (const QByteArray& step :
         {FakeMaster::testSet(31, first, 5), FakeMaster::commitSet(32), FakeMaster::cleanupSet(33)}) {
        const FakeMaster::Answer answer = answerTo(step + step + step);
        EXPECT_NE(answer.packet, 0U) << agent->log().constData();
        EXPECT_EQ(answer.error, 0);
    }
    const FakeMaster::Answer answer = answerTo(FakeMaster::get(34, first));
    ASSERT_EQ(answer.varbinds.size(), 1U) << agent->log().constData();
    EXPECT_EQ(answer.packet, 34U) << "each step has one answer";
    EXPECT_EQ(answer.varbinds.at(0).value, QStringLiteral("5"));
    EXPECT_EQ(application->questions().size(), 1U);
    EXPECT_EQ(master.joins(), 1);
}

// The agent crashed.
TEST_F(StrangeMaster, IsLeftIfItStartsASetTwice)
{
    ASSERT_EQ(answerTo(FakeMaster::testSet(31, first, 5)).error, 0);
    master.send(FakeMaster::testSet(32, first, 6));
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    ASSERT_EQ(answerTo(FakeMaster::testSet(33, first, 5)).error, 0);
    ASSERT_EQ(answerTo(FakeMaster::cleanupSet(34)).packet, 34U) << agent->log().constData();
    ASSERT_EQ(answerTo(FakeMaster::testSet(35, first, 5)).error, 0) << "the first one has ended";
    EXPECT_EQ(master.joins(), 2);
}

TEST_F(StrangeMaster, IsLeftIfItGoesOnWithASetItHasNotStarted)
{
    int joins = 1;
    for (const QByteArray& step : {FakeMaster::commitSet(31), FakeMaster::cleanupSet(31)}) {
        master.send(step);
        ASSERT_TRUE(master.waitForJoins(++joins)) << agent->log().constData();
    }
    expectServed();
}

// A session that ended during a SET left it to the next one, and the agent read freed memory.
TEST_F(StrangeMaster, IsLeftIfItGoesOnWithTheSetOfAnEarlierSession)
{
    ASSERT_EQ(answerTo(FakeMaster::testSet(31, first, 5)).error, 0);
    master.hangUp();
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    master.send(FakeMaster::cleanupSet(32) + FakeMaster::testSet(33, first, 5));
    ASSERT_TRUE(master.waitForJoins(3)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, MaySendAMessageInPieces)
{
    const QByteArray request = FakeMaster::get(41, first);
    for (int size = 1; size < request.size(); size += 3) {
        master.send(request.left(size));
        expectApplicationsServed();
        EXPECT_EQ(answerTo(request.mid(size)).packet, 41u) << size;
    }
}

TEST_F(StrangeMaster, IsToldAtOnceThatAGigabyteIsTooMuch)
{
    QByteArray request = FakeMaster::get(41, first);
    request[19] = 0x40; // the highest byte of the length
    const FakeMaster::Answer answer = answerTo(request);
    EXPECT_EQ(answer.packet, 41u);
    EXPECT_EQ(answer.error, SNMP_ERR_TOOBIG);
    const auto before = support::residentKilobytes(agent->processId());
    for (int i = 0; i < 20; ++i)
        master.send(QByteArray(1'000'000, 'x'));
    expectApplicationsServed();
    if (before) {
        EXPECT_LT(support::residentKilobytes(agent->processId()).value_or(0), *before + 5'000);
    }
    master.hangUp();
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, IsLeftIfItSendsGarbage)
{
    master.send(QByteArray(1000, '\x41'));
    EXPECT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, MaySendAMessageWithAWrongContent)
{
    master.send(FakeMaster::message(FakeMaster::getCommand, 41, QByteArray(40, '\xff')) +
                FakeMaster::message(FakeMaster::getNextCommand, 42, QByteArray(3, '\0')) +
                FakeMaster::message(FakeMaster::getCommand, 43, QByteArray()) +
                FakeMaster::message(99, 44, QByteArray(8, 'x')));
    expectApplicationsServed();
    ASSERT_TRUE(runUntil([&] {
        master.send(FakeMaster::get(1000, first));
        return !master.answers().empty() && master.answers().back().packet == 1000;
    })) << agent->log().constData();
}

TEST_F(StrangeMaster, MayCloseInTheMiddleOfAMessage)
{
    master.send(FakeMaster::get(41, first).left(30));
    master.hangUp();
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, MayCloseBeforeItsAnswer)
{
    QByteArray requests;
    for (quint32 packet = 1; packet <= 1000; ++packet)
        requests += FakeMaster::get(packet, first);
    master.send(requests);
    master.hangUp();
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, MayCloseDuringASet)
{
    application->onQuestion = [](const FakeApplication::Request&) {};
    master.send(FakeMaster::testSet(31, first, 5) + FakeMaster::get(32, first));
    ASSERT_TRUE(runUntil([&] { return !application->questions().empty(); }));
    master.hangUp();
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, IsLeftIfItNeverReads)
{
    master.stopReading();
    QByteArray requests;
    for (quint32 packet = 1; packet <= 1000; ++packet)
        requests += FakeMaster::get(packet, second);
    for (int i = 0; i < 50; ++i) // their answers take more than the system keeps for a connection
        master.send(requests);
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
    expectApplicationsServed();
}

TEST_F(StrangeMaster, MayAnswerLateAndTwice)
{
    const auto pings = std::make_shared<int>(0); // the agent's last request comes after the test
    master.onRequest = [this, pings](int, quint32 packet) {
        for (const quint32 answered : {packet - 1, packet, packet})
            master.accept(answered);
        ++*pings;
    };
    ASSERT_TRUE(runUntil([&] { return *pings > 1; }));
    expectServed();
    EXPECT_EQ(master.joins(), 1);
}

TEST_F(StrangeMaster, MayOpenASessionTooLate)
{
    constexpr int afterTheTimeOutMs = 400;
    const auto isFirst = std::make_shared<bool>(true);
    master.onRequest = [this, isFirst](int command, quint32 packet) {
        if (command == FakeMaster::openCommand && std::exchange(*isFirst, false))
            runUntil([] { return false; }, afterTheTimeOutMs);
        master.accept(packet);
    };
    master.hangUp();
    ASSERT_TRUE(master.waitForJoins(2)) << agent->log().constData();
    expectServed();
}

TEST_F(StrangeMaster, MayRestartManyTimes)
{
    const int restarts = support::isFullLoad() ? 100 : 5;
    const auto before = support::residentKilobytes(agent->processId());
    for (int restart = 1; restart <= restarts; ++restart) {
        master.hangUp();
        ASSERT_TRUE(master.waitForJoins(restart + 1)) << agent->log().constData();
        expectServed();
    }
    expectApplicationsServed();
    if (before) {
        EXPECT_LT(support::residentKilobytes(agent->processId()).value_or(0), *before + 5'000);
    }
}
