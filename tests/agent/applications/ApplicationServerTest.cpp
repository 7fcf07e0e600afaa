// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/applications/ApplicationServer.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "support/FakeApplication.h"
#include "support/ManualClock.h"
#include "support/RunUntil.h"

using agent::ApplicationInfo;
using agent::ApplicationServer;
using support::FakeApplication;
using support::runUntil;

namespace {

const agent::ObjectId firstCell{1, 3, 6, 1, 4, 1, 32473, 5, 1};

class ApplicationServerTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_FALSE(server.listen(QHostAddress::LocalHost, 0)); }

    quint16 port() const { return server.address().section(QLatin1Char(':'), -1).toUShort(); }
    static agent::Limits limits()
    {
        agent::Limits limits;
        limits.connections = 3;
        limits.cells = 4;
        limits.textBytes = 10;
        return limits;
    }

    bool waitForCells(size_t count)
    {
        return runUntil([&] { return store.size() == count; });
    }

    agent::CellStore store;
    support::ManualClock clock;
    agent::ServedCells cells{store, clock, {{10'000, 60'000, 3, 100}, 60'000}};
    ApplicationServer server{cells, clock, limits()};
};

} // namespace

TEST_F(ApplicationServerTest, ReportsAConnectedApplication)
{
    FakeApplication application(port());
    ASSERT_TRUE(runUntil([&] { return server.applications().size() == 1; }));
    EXPECT_TRUE(server.applications()[0].lastFrame.isNull());
    const QDateTime connected = clock.nowUtc();
    clock.advance(5000);
    application.publish("5.1", 1);
    application.publish("5.1", 2);
    application.publish("5.2", 3);
    ASSERT_TRUE(waitForCells(2));

    const ApplicationInfo info = server.applications()[0];
    EXPECT_EQ(info.number, 1u);
    EXPECT_EQ(info.address, QHostAddress(QHostAddress::LocalHost));
    EXPECT_EQ(info.port, application.localPort());
    EXPECT_EQ(info.state, ApplicationInfo::State::Connected);
    EXPECT_EQ(info.since, connected);
    EXPECT_EQ(info.cells, 2u);
    EXPECT_EQ(info.frames, 3u);
    EXPECT_EQ(info.recordsRefused, 0u);
    EXPECT_EQ(info.lastFrame, clock.nowUtc());
}

TEST_F(ApplicationServerTest, RefusesApplicationsAtTheLimitUntilOneDisconnects)
{
    std::vector<std::unique_ptr<FakeApplication>> applications;
    for (int i = 0; i < 3; ++i)
        applications.push_back(std::make_unique<FakeApplication>(port()));
    ASSERT_TRUE(runUntil([&] { return server.applications().size() == 3; }));
    FakeApplication tooMany(port());
    EXPECT_TRUE(tooMany.waitForDisconnect());
    applications[0]->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    EXPECT_EQ(server.applications().size(), 3u);

    applications.pop_back();
    ASSERT_TRUE(runUntil([&] { return server.applications().size() == 2; }));
    FakeApplication next(port());
    next.publish("5.2", 1);
    EXPECT_TRUE(waitForCells(2));
}

TEST_F(ApplicationServerTest, RefusesCellsBeyondTheLimitAndServesTheOthers)
{
    FakeApplication application(port());
    FakeApplication other(port());
    for (const char* oid : {"5.1", "5.2", "5.3", "5.4", "5.5", "5.6"})
        application.publish(oid, 1);
    application.publish("5.1", 2);
    other.publish("5.7", 1);
    ASSERT_TRUE(waitForCells(5));
    ASSERT_TRUE(runUntil([&] { return std::get<int>(store.find(firstCell)->value) == 2; }));
    EXPECT_EQ(server.applications()[0].cells, 4u);
    EXPECT_EQ(server.applications()[0].recordsRefused, 2u);

    application.unset("5.2");
    application.publish("5.5", 1);
    EXPECT_TRUE(runUntil([&] { return store.find({1, 3, 6, 1, 4, 1, 32473, 5, 5}) != nullptr; }));
}

TEST_F(ApplicationServerTest, ATooLongTextRemovesTheCellUntilTheTextIsShorter)
{
    FakeApplication application(port());
    application.publish("5.1", std::string("0123456789"));
    ASSERT_TRUE(waitForCells(1));
    application.publish("5.1", std::string("0123456789a"));
    EXPECT_TRUE(waitForCells(0));
    application.publish("5.1", std::string("short"));
    EXPECT_TRUE(waitForCells(1));
    EXPECT_TRUE(application.isConnected());
}

TEST_F(ApplicationServerTest, CountsRefusedRecords)
{
    FakeApplication application(port());
    application.publish("", 1);
    application.publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    EXPECT_EQ(server.applications()[0].recordsRefused, 1u);
    EXPECT_EQ(server.applications()[0].frames, 2u);
}

TEST_F(ApplicationServerTest, ForgetsAnApplicationDisconnectedWithoutCells)
{
    FakeApplication application(port());
    application.publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    application.unset("5.1");
    application.close();
    EXPECT_TRUE(runUntil([&] { return server.applications().empty(); }));
}

TEST_F(ApplicationServerTest, ReportsALostApplicationUntilItsLastCellIsGone)
{
    FakeApplication application(port());
    application.publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    clock.advance(1000);
    application.close();
    ASSERT_TRUE(runUntil([&] { return server.applications()[0].state == ApplicationInfo::State::Lost; }));
    EXPECT_FALSE(server.isConnected(1));
    EXPECT_EQ(server.applications()[0].since, clock.nowUtc());
    EXPECT_EQ(server.applications()[0].cells, 1u);

    FakeApplication next(port());
    next.publish("5.1", 2);
    ASSERT_TRUE(runUntil([&] { return server.applications()[0].number == 2; }));
    EXPECT_EQ(server.applications().size(), 1u);
}

TEST_F(ApplicationServerTest, SaysWhyItCannotListen)
{
    ApplicationServer other(cells, clock, limits());
    const agent::Error error = other.listen(QHostAddress::LocalHost, port());
    EXPECT_FALSE(error.text().isEmpty());
}

TEST_F(ApplicationServerTest, SignalsAValueWithANotification)
{
    std::vector<agent::ObjectId> wanted;
    QObject::connect(&server, &ApplicationServer::notificationWanted, &server,
                     [&](const agent::ObjectId& id) { wanted.push_back(id); });
    base::SnmpInt record;
    record.oid = "5.1";
    record.value.setValue(7);
    QByteArray payload;
    record.serialize(payload);
    FakeApplication application(port());
    application.publish("5.2", 1);
    application.sendFrame(base::SnmpIntType, base::ValueAndNotify, payload);
    EXPECT_TRUE(runUntil([&] { return !wanted.empty(); }));
    EXPECT_THAT(wanted, testing::ElementsAre(firstCell));
}
