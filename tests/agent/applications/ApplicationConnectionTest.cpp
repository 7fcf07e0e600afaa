// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QTcpServer>

#include "agent/applications/ApplicationConnection.h"
#include "base/wire/FrameHeader.h"
#include "base/wire/SnmpInt.h"
#include "support/FakeApplication.h"
#include "support/ManualClock.h"
#include "support/RunUntil.h"

using agent::ApplicationConnection;
using support::FakeApplication;

namespace {

class ApplicationConnectionTest : public testing::Test
{
protected:
    ApplicationConnectionTest()
    {
        server.listen(QHostAddress::LocalHost);
        application = std::make_unique<FakeApplication>(server.serverPort());
        server.waitForNewConnection(10'000);
        connection = std::make_unique<ApplicationConnection>(
            server.nextPendingConnection(), 1, agent::Identity(), clock, agent::Limits(), nullptr);
        QObject::connect(connection.get(), &ApplicationConnection::lost, connection.get(),
                         [this] { ++losses; });
    }

    const agent::ObjectId cell{1, 3, 6, 1, 4, 1, 32473, 5, 1};
    support::ManualClock clock;
    QTcpServer server;
    std::unique_ptr<FakeApplication> application;
    std::unique_ptr<ApplicationConnection> connection;
    int losses = 0;
};

} // namespace

TEST_F(ApplicationConnectionTest, AQuestionCarriesItsNumberAndTheRelativeIdentifier)
{
    application->onQuestion = [](const FakeApplication::Request&) {};
    connection->ask(77, cell, 5);
    ASSERT_TRUE(support::runUntil([&] { return application->questions().size() == 1; }));
    EXPECT_EQ(application->questions()[0].storeType, 77);
    EXPECT_EQ(application->questions()[0].oid, "5.1");
    EXPECT_EQ(application->questions()[0].value, "5");
}

TEST_F(ApplicationConnectionTest, AnAnswerCarriesTheNumberOfItsQuestion)
{
    int number = 0;
    int status = 0;
    QObject::connect(connection.get(), &ApplicationConnection::answerReceived, connection.get(),
                     [&](int answered, int errorStatus) {
                         number = answered;
                         status = errorStatus;
                     });
    application->onQuestion = [&](const FakeApplication::Request& question) {
        application->answer(question, 12);
    };
    connection->ask(77, cell, std::string("text"));
    EXPECT_TRUE(support::runUntil([&] { return number == 77; }));
    EXPECT_EQ(status, 12);
}

TEST_F(ApplicationConnectionTest, ACommitCarriesNoNumber)
{
    connection->commit(cell, std::string("text"));
    ASSERT_TRUE(support::runUntil([&] { return application->commits().size() == 1; }));
    EXPECT_EQ(application->commits()[0].storeType, 0);
    EXPECT_EQ(application->commits()[0].value, "text");
}

TEST_F(ApplicationConnectionTest, DisconnectsASlowReaderButNeverInsideACall)
{
    application->stopReading();
    const std::string text(65'000, 'x');
    for (int sent = 0; sent < 1000; ++sent)
        connection->commit(cell, text);
    EXPECT_EQ(losses, 0) << "from inside commit()";
    EXPECT_TRUE(support::runUntil([&] { return losses == 1; }));
    connection->commit(cell, text);
    EXPECT_TRUE(support::runUntil([&] { return !application->isConnected(); }));
    EXPECT_EQ(losses, 1);
}

TEST_F(ApplicationConnectionTest, SignalsTheLossOnce)
{
    application->sendBytes("not a frame at all, but sixteen bytes and more");
    EXPECT_TRUE(support::runUntil([&] { return losses == 1; }));
    EXPECT_TRUE(application->waitForDisconnect());
    EXPECT_EQ(losses, 1);
}

TEST_F(ApplicationConnectionTest, DisconnectsAnApplicationWithAnUnfinishedFrame)
{
    application->sendBytes(QByteArray::fromHex("abba0815"));
    ASSERT_TRUE(support::runUntil([&] { return clock.pendingCalls() == 1; }));
    clock.advance(agent::Limits::frameMs - 1);
    EXPECT_EQ(losses, 0);
    clock.advance(1);
    EXPECT_TRUE(support::runUntil([&] { return losses == 1; }));
}

TEST_F(ApplicationConnectionTest, AcceptsSlowFramesCompletedInTime)
{
    base::SnmpInt record;
    record.oid = "5.1";
    QByteArray payload;
    record.serialize(payload);
    QByteArray bytes;
    for (quint64 counter = 1; counter <= 4; ++counter) {
        base::FrameHeader header;
        header.messageCounter = counter;
        bytes += header.toBytes(payload.size()) + payload;
    }
    const int size = bytes.size() / 4;
    application->sendBytes(bytes.left(size / 2));
    ASSERT_TRUE(support::runUntil([&] { return clock.pendingCalls() == 1; }));
    for (int frame = 1; frame <= 3; ++frame) {
        clock.advance(agent::Limits::frameMs / 2);
        application->sendBytes(bytes.mid(frame * size - size / 2, size));
        ASSERT_TRUE(support::runUntil([&] { return connection->info().frames == quint64(frame); }));
    }
    application->sendBytes(bytes.mid(4 * size - size / 2));
    ASSERT_TRUE(support::runUntil([&] { return connection->info().frames == 4; }));
    clock.advance(10 * agent::Limits::frameMs);
    EXPECT_EQ(losses, 0);
    EXPECT_EQ(clock.pendingCalls(), 0u);
}
