// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/applications/ApplicationServer.h"
#include "base/wire/Protocol.h"
#include "base/wire/SnmpInt.h"
#include "support/FakeApplication.h"
#include "support/ManualClock.h"
#include "support/RunUntil.h"
#include "support/ServedRow.h"

using agent::ApplicationInfo;
using agent::ApplicationServer;
using support::FakeApplication;
using support::runUntil;

namespace {

const agent::ObjectId firstCell{1, 3, 6, 1, 4, 1, 32473, 5, 1};
const agent::ObjectId mark{1, 3, 6, 1, 4, 1, 32473, 6, 1};

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
    agent::Identity nextIdentity{"1001", 4711, QStringLiteral("shop-server")}; ///< of the next application
    ApplicationServer server{cells, clock, limits(), [this](std::intptr_t) { return nextIdentity; }};

    /// Connects an application of this user.
    std::unique_ptr<FakeApplication> connectAs(const agent::User& user)
    {
        nextIdentity = {user, 0, QString()};
        const size_t before = server.applications().size();
        auto application = std::make_unique<FakeApplication>(port());
        EXPECT_TRUE(runUntil([&] { return server.applications().size() > before; }));
        return application;
    }

    int valueOf(const agent::ObjectId& id) const { return std::get<int>(store.find(id)->value); }

    /// Waits until the server has handled everything the application has sent.
    bool settle(FakeApplication& application)
    {
        application.publish("6.1", ++m_marks);
        return runUntil([&] { return store.find(mark) && valueOf(mark) == m_marks; });
    }

private:
    int m_marks = 0;
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
    EXPECT_EQ(info.identity.user, "1001");
    EXPECT_EQ(info.identity.process, 4711U);
    EXPECT_EQ(info.identity.program, QStringLiteral("shop-server"));
    EXPECT_EQ(server.nameOf(1),
              QStringLiteral("application 1 (shop-server, uid 1001, pid 4711, 127.0.0.1:%1)")
                  .arg(application.localPort()));
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
    for (int i = 0; i < 3; ++i) {
        applications.push_back(std::make_unique<FakeApplication>(port()));
        applications.back()->unset("5"); // not silent
    }
    ASSERT_TRUE(runUntil([&] {
        const std::vector<ApplicationInfo> all = server.applications();
        return all.size() == 3 &&
               std::all_of(all.begin(), all.end(), [](const auto& each) { return each.frames > 0; });
    }));
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

TEST_F(ApplicationServerTest, ServesALongTextCut)
{
    FakeApplication application(port());
    application.publish("5.1", std::string("01234567\xC3\xA4\xC3\xA4"));
    ASSERT_TRUE(waitForCells(1));
    EXPECT_EQ(support::servedCell(store, firstCell), "01234567\xC3\xA4");
    application.publish("5.1", std::string("01234567x\xC3\xA4"));
    EXPECT_TRUE(runUntil([&] { return support::servedCell(store, firstCell) == "01234567x"; }));
    EXPECT_TRUE(application.isConnected());
    EXPECT_EQ(server.applications()[0].recordsRefused, 0u);
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

TEST_F(ApplicationServerTest, AnotherUserCannotTakeOverACell)
{
    const auto application = connectAs("1001");
    application->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    const auto other = connectAs("1002");
    other->publish("5.1", 2);
    other->unset("5.1");
    ASSERT_TRUE(settle(*other));
    EXPECT_EQ(valueOf(firstCell), 1);
    EXPECT_EQ(store.find(firstCell)->owner, 1U);
    EXPECT_EQ(server.counts().takeoversRefused, 1U);
    EXPECT_EQ(server.applications()[1].recordsRefused, 1U);
    EXPECT_TRUE(other->isConnected());
}

TEST_F(ApplicationServerTest, TheSameUserAndRootTakeOverACell)
{
    const auto application = connectAs("1001");
    application->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    const auto same = connectAs("1001");
    same->publish("5.1", 2);
    EXPECT_TRUE(runUntil([&] { return valueOf(firstCell) == 2; }));
    const auto root = connectAs("0");
    root->publish("5.1", 3);
    EXPECT_TRUE(runUntil([&] { return valueOf(firstCell) == 3; }));
    same->publish("5.1", 4);
    ASSERT_TRUE(settle(*same));
    EXPECT_EQ(valueOf(firstCell), 3) << "now it is root's";
    EXPECT_EQ(server.counts().takeoversRefused, 1U);
}

TEST_F(ApplicationServerTest, UnknownUsersAreOneOwner)
{
    const auto unknown = connectAs({});
    unknown->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    const auto known = connectAs("1001");
    known->publish("5.1", 2);
    ASSERT_TRUE(settle(*known));
    EXPECT_EQ(valueOf(firstCell), 1);
    const auto alsoUnknown = connectAs({});
    alsoUnknown->publish("5.1", 3);
    EXPECT_TRUE(runUntil([&] { return valueOf(firstCell) == 3; }));
    alsoUnknown->publish("6.1", 4);
    alsoUnknown->publish("5.2", 5);
    ASSERT_TRUE(waitForCells(3));
    EXPECT_NE(valueOf(mark), 4) << "the cell of a known user";
}

TEST_F(ApplicationServerTest, ACellOfALostApplicationStaysItsUsers)
{
    auto application = connectAs("1001");
    application->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    application->close();
    ASSERT_TRUE(runUntil([&] { return server.applications()[0].state == ApplicationInfo::State::Lost; }));
    EXPECT_TRUE(server.nameOf(1).contains(QStringLiteral("uid 1001")));
    const auto other = connectAs("1002");
    other->publish("5.1", 2);
    ASSERT_TRUE(settle(*other));
    EXPECT_EQ(valueOf(firstCell), 1);
    const auto again = connectAs("1001");
    again->publish("5.1", 3);
    EXPECT_TRUE(runUntil([&] { return valueOf(firstCell) == 3; }));
}

TEST_F(ApplicationServerTest, EveryUserMayTakeOverTheCellsOfALostUnknownOne)
{
    const auto unknown = connectAs({});
    unknown->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    unknown->close();
    ASSERT_TRUE(runUntil([&] { return server.applications()[0].state == ApplicationInfo::State::Lost; }));
    const auto again = connectAs("1001");
    again->publish("5.1", 2);
    EXPECT_TRUE(runUntil([&] { return valueOf(firstCell) == 2; }));
    EXPECT_EQ(server.counts().takeoversRefused, 0U);
}

TEST_F(ApplicationServerTest, AFreedCellIsForEveryUser)
{
    const auto application = connectAs("1001");
    application->publish("5.1", 1);
    application->unset("5.1");
    ASSERT_TRUE(settle(*application));
    const auto other = connectAs("1002");
    other->publish("5.1", 2);
    EXPECT_TRUE(runUntil([&] { return store.find(firstCell) != nullptr; }));
    EXPECT_EQ(server.counts().takeoversRefused, 0U);
}

TEST_F(ApplicationServerTest, TurnsAwayUsersWhoMayNotPublish)
{
    agent::Limits someUsers = limits();
    someUsers.users = {"1001"};
    ApplicationServer strict(cells, clock, someUsers, [this](std::intptr_t) { return nextIdentity; });
    ASSERT_FALSE(strict.listen(QHostAddress::LocalHost, 0));
    const quint16 strictPort = strict.address().section(QLatin1Char(':'), -1).toUShort();
    for (const agent::User& user : {agent::User("1002"), agent::User("0"), agent::User()}) {
        nextIdentity = {user, 0, QString()};
        FakeApplication application(strictPort);
        EXPECT_TRUE(application.waitForDisconnect());
    }
    nextIdentity = {"1001", 0, QString()};
    FakeApplication application(strictPort);
    application.publish("5.1", 1);
    EXPECT_TRUE(waitForCells(1));
}

TEST_F(ApplicationServerTest, OneUserLeavesConnectionsToOthers)
{
    agent::Limits sixteen = limits();
    sixteen.connections = 16;
    ApplicationServer large(cells, clock, sixteen, [this](std::intptr_t) { return nextIdentity; });
    ASSERT_FALSE(large.listen(QHostAddress::LocalHost, 0));
    const quint16 largePort = large.address().section(QLatin1Char(':'), -1).toUShort();
    std::vector<std::unique_ptr<FakeApplication>> applications;
    for (int i = 0; i < 14; ++i) {
        applications.push_back(std::make_unique<FakeApplication>(largePort));
        applications.back()->publish("5." + std::to_string(i % 2), 1);
    }
    ASSERT_TRUE(runUntil([&] {
        const std::vector<ApplicationInfo> all = large.applications();
        return all.size() == 14 &&
               std::all_of(all.begin(), all.end(), [](const auto& each) { return each.frames > 0; });
    }));
    FakeApplication tooMany(largePort);
    EXPECT_TRUE(tooMany.waitForDisconnect());
    for (const agent::User& user : {agent::User("1002"), agent::User("0")}) {
        nextIdentity = {user, 0, QString()};
        applications.push_back(std::make_unique<FakeApplication>(largePort));
        const size_t expected = applications.size();
        EXPECT_TRUE(runUntil([&] { return large.applications().size() == expected; }));
    }
}

TEST_F(ApplicationServerTest, RootMayHaveAllConnections)
{
    agent::Limits sixteen = limits();
    sixteen.connections = 16;
    nextIdentity = {"0", 0, QString()};
    ApplicationServer large(cells, clock, sixteen, [this](std::intptr_t) { return nextIdentity; });
    ASSERT_FALSE(large.listen(QHostAddress::LocalHost, 0));
    const quint16 largePort = large.address().section(QLatin1Char(':'), -1).toUShort();
    std::vector<std::unique_ptr<FakeApplication>> applications;
    for (int i = 0; i < 16; ++i)
        applications.push_back(std::make_unique<FakeApplication>(largePort));
    EXPECT_TRUE(runUntil([&] { return large.applications().size() == 16; }));
}

TEST_F(ApplicationServerTest, TheOldestSilentConnectionMakesRoom)
{
    const auto active = connectAs("1001");
    active->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    const auto silent = connectAs("1001");
    const auto newest = connectAs("1003");
    nextIdentity = {"1002", 0, QString()};
    FakeApplication other(port());
    EXPECT_TRUE(silent->waitForDisconnect());
    EXPECT_TRUE(newest->isConnected());
    other.publish("5.2", 1);
    EXPECT_TRUE(waitForCells(2));

    FakeApplication second(port());
    EXPECT_TRUE(newest->waitForDisconnect());
    second.publish("5.3", 1);
    EXPECT_TRUE(waitForCells(3));

    FakeApplication third(port()); // now all have sent values
    EXPECT_TRUE(third.waitForDisconnect());
    EXPECT_TRUE(active->isConnected());
    EXPECT_TRUE(other.isConnected());
    EXPECT_TRUE(second.isConnected());
}

TEST_F(ApplicationServerTest, AUserWithoutAPlaceLeftGivesUpItsOwnSilentOne)
{
    agent::Limits eight = limits();
    eight.connections = 8;
    ApplicationServer large(cells, clock, eight, [this](std::intptr_t) { return nextIdentity; });
    ASSERT_FALSE(large.listen(QHostAddress::LocalHost, 0));
    const quint16 largePort = large.address().section(QLatin1Char(':'), -1).toUShort();
    nextIdentity = {"1002", 0, QString()};
    FakeApplication silentOfAnother(largePort);
    ASSERT_TRUE(runUntil([&] { return large.applications().size() == 1; }));
    nextIdentity = {"1001", 0, QString()};
    std::vector<std::unique_ptr<FakeApplication>> applications;
    for (int i = 0; i < 7; ++i)
        applications.push_back(std::make_unique<FakeApplication>(largePort));
    ASSERT_TRUE(runUntil([&] { return large.applications().size() == 8; }));
    FakeApplication next(largePort);
    EXPECT_TRUE(applications[0]->waitForDisconnect());
    EXPECT_TRUE(silentOfAnother.isConnected());
    next.publish("5.1", 1);
    EXPECT_TRUE(waitForCells(1));
}

TEST_F(ApplicationServerTest, DisconnectsASilentApplicationAfterAMinute)
{
    const auto silent = connectAs("1001");
    const auto active = connectAs("1001");
    active->publish("5.1", 1);
    ASSERT_TRUE(waitForCells(1));
    clock.advance(agent::Limits::frameMs - 1);
    EXPECT_EQ(server.applications().size(), 2U);
    clock.advance(1);
    EXPECT_TRUE(silent->waitForDisconnect());
    EXPECT_TRUE(active->isConnected());
    EXPECT_EQ(server.applications().size(), 1U);
}

TEST_F(ApplicationServerTest, LimitsTheCellsOfAllApplicationsOfAUser)
{
    agent::Limits few = limits();
    few.userCells = 5;
    ApplicationServer strict(cells, clock, few, [this](std::intptr_t) { return nextIdentity; });
    ASSERT_FALSE(strict.listen(QHostAddress::LocalHost, 0));
    const quint16 strictPort = strict.address().section(QLatin1Char(':'), -1).toUShort();
    FakeApplication first(strictPort);
    for (const char* oid : {"5.1", "5.2", "5.3"})
        first.publish(oid, 1);
    ASSERT_TRUE(waitForCells(3));
    FakeApplication second(strictPort);
    for (const char* oid : {"5.4", "5.5", "5.6", "5.7"})
        second.publish(oid, 1);
    ASSERT_TRUE(runUntil([&] {
        const auto applications = strict.applications(); // one, until the second is accepted
        return applications.size() == 2 && applications[1].recordsRefused == 2;
    }));
    EXPECT_EQ(store.size(), 5U);
    second.publish("5.5", 2);
    EXPECT_TRUE(runUntil([&] {
        return valueOf({1, 3, 6, 1, 4, 1, 32473, 5, 5}) == 2;
    })) << "its own may change";

    nextIdentity = {"1002", 0, QString()};
    FakeApplication other(strictPort);
    other.publish("5.8", 1);
    EXPECT_TRUE(waitForCells(6));
}

namespace {

/// Little memory: a megabyte.
class MemoryShares : public ApplicationServerTest
{
protected:
    static constexpr size_t all = 3 * 256 * 1024; // a quarter is for unfinished frames

    void SetUp() override { ASSERT_FALSE(scarce.listen(QHostAddress::LocalHost, 0)); }

    static agent::Limits oneMegabyte()
    {
        agent::Limits limits;
        limits.megabytes = 1;
        return limits;
    }

    std::unique_ptr<FakeApplication> connectScarce(const agent::User& user)
    {
        nextIdentity = {user, 0, QString()};
        const size_t before = scarce.applications().size();
        auto application =
            std::make_unique<FakeApplication>(scarce.address().section(QLatin1Char(':'), -1).toUShort());
        EXPECT_TRUE(runUntil([&] { return scarce.applications().size() > before; }));
        return application;
    }

    /// Publishes texts of 10 kB until most are refused. Returns the memory of the cells served.
    size_t publishMuch(FakeApplication& application, const std::string& tree)
    {
        constexpr quint64 count = 200;
        const size_t before = store.memory();
        const quint64 framesBefore = framesOf(application);
        for (quint64 i = 0; i < count; ++i)
            application.publish(tree + "." + std::to_string(i), std::string(10'000, 'x'));
        EXPECT_TRUE(runUntil([&] { return framesOf(application) >= framesBefore + count; }));
        return store.memory() - before;
    }

    quint64 framesOf(const FakeApplication& application) const
    {
        for (const ApplicationInfo& info : scarce.applications()) {
            if (info.port == application.localPort())
                return info.frames;
        }
        return 0;
    }

    ApplicationServer scarce{cells, clock, oneMegabyte(), [this](std::intptr_t) { return nextIdentity; }};
};

} // namespace

TEST_F(MemoryShares, AUserLeavesAsMuchToOthersAsItTakes)
{
    const auto first = connectScarce("1001");
    EXPECT_NEAR(static_cast<double>(publishMuch(*first, "5")), all / 2.0, 11'000);
    const auto second = connectScarce("1002");
    EXPECT_NEAR(static_cast<double>(publishMuch(*second, "6")), all / 4.0, 11'000);
    EXPECT_EQ(publishMuch(*first, "7"), 0U);
    EXPECT_GT(scarce.applications().front().recordsRefused, 200U);
}

TEST_F(MemoryShares, AllApplicationsOfAUserHaveOneShare)
{
    const auto first = connectScarce("1001");
    publishMuch(*first, "5");
    const auto second = connectScarce("1001");
    EXPECT_EQ(publishMuch(*second, "6"), 0U);
}

TEST_F(MemoryShares, RootMayTakeAll)
{
    const auto root = connectScarce("0");
    EXPECT_NEAR(static_cast<double>(publishMuch(*root, "5")), static_cast<double>(all), 11'000);
}

TEST_F(MemoryShares, ACellThatCannotGrowIsRemovedAndOthersMayChange)
{
    const auto application = connectScarce("1001");
    application->publish("4.1", 1);
    application->publish("4.2", std::string("short"));
    ASSERT_TRUE(waitForCells(2));
    publishMuch(*application, "5");
    const size_t before = store.size();
    application->publish("4.2", std::string(20'000, 'x'));
    ASSERT_TRUE(runUntil([&] { return store.size() == before - 1; })) << "an outdated value is not served";
    application->publish("4.1", 2);
    EXPECT_TRUE(runUntil([&] { return valueOf({1, 3, 6, 1, 4, 1, 32473, 4, 1}) == 2; }));
}

TEST_F(MemoryShares, LostApplicationsOfTheUserMakeRoom)
{
    auto first = connectScarce("1001");
    publishMuch(*first, "5");
    first.reset();
    const auto isLost = [](const ApplicationInfo& info) {
        return info.state == ApplicationInfo::State::Lost;
    };
    ASSERT_TRUE(runUntil([&] { return isLost(scarce.applications().front()); }));
    const auto second = connectScarce("1001");
    publishMuch(*second, "6");
    EXPECT_EQ(scarce.applications().size(), 1U) << "the lost one is gone";
    EXPECT_NEAR(static_cast<double>(store.memory()), all / 2.0, 11'000);
}

// All lost applications went, and the value was refused all the same.
TEST_F(MemoryShares, LostApplicationsStayIfTheValueDoesNotFitWithoutThem)
{
    const auto living = connectScarce("1001");
    auto lost = connectScarce("1001");
    lost->publish("5.1", std::string(10'000, 'x'));
    ASSERT_TRUE(waitForCells(1));
    lost.reset();
    ASSERT_TRUE(runUntil([&] { return scarce.applications().back().state == ApplicationInfo::State::Lost; }));
    constexpr quint64 count = 7; // of 60 kB; 393 kB are the share
    for (quint64 i = 0; i < count; ++i)
        living->publish("6." + std::to_string(i), std::string(60'000, 'x'));
    ASSERT_TRUE(runUntil([&] { return framesOf(*living) == count; }));
    EXPECT_EQ(scarce.applications().size(), 2U) << "the lost one is still there";
    EXPECT_EQ(scarce.applications().front().recordsRefused, 1U);
}

TEST_F(MemoryShares, UnfinishedFramesCount)
{
    const auto victim = connectScarce("1002");
    victim->publish("6.1", 1);
    const auto application = connectScarce("1001");
    const QByteArray half = QByteArray::fromHex("abba08154711f0070000000003000000") + QByteArray(50'000, 'x');
    application->sendBytes(half);
    EXPECT_TRUE(runUntil([&] { return scarce.memory() >= 50'000; }));
    const auto next = connectScarce("1001");
    next->sendBytes(half);
    EXPECT_TRUE(next->waitForDisconnect());
    EXPECT_TRUE(application->isConnected());
    EXPECT_TRUE(victim->isConnected());
    publishMuch(*victim, "5");
    EXPECT_TRUE(victim->isConnected()) << "a full share of cells ends no connection";
    application->close();
    EXPECT_TRUE(runUntil([&] { return scarce.memory() == store.memory(); }));
}

TEST(Identity, IsTextForMessages)
{
    using agent::identityText;
    EXPECT_EQ(identityText({"1001", 4711, QStringLiteral("shop-server")}),
              QStringLiteral("shop-server, uid 1001, pid 4711"));
    EXPECT_EQ(identityText({"1001", 0, QString()}), QStringLiteral("uid 1001"));
    EXPECT_EQ(identityText({}), QStringLiteral("unknown user"));
}
