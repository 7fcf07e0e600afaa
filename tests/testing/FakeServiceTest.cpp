// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/vigil.h>

#include <QtGlobal>

#include <memory>
#include <string>
#include <thread>

#include "testing/TestedApplication.h"

using testing::Not;
using vigil::HealthStatus;
using vigil::test::FakeService;
using vigil::test::HasCheck;
using vigil::test::HasMetric;
using vigil::test::HasNoChecks;
using vigil::test::HasNumber;
using vigil::test::HasStatus;
using vigil::test::HasSummary;
using vigil::test::HasValue;
using vigil::test::PublishedTable;
using vigil::test::Publishes;

namespace {

constexpr const char* ownCell = "1.3.6.1.4.1.32473.1.2.0";

} // namespace

class PublishingToAFakeService : public TestedApplication
{
};

TEST_F(PublishingToAFakeService, ShowsAllOfACheckAtOnce)
{
    publish(42);
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(HealthStatus::Warning),
                                              HasMetric("pending", HasValue(42))));
}

TEST_F(PublishingToAFakeService, ShowsTheLastOfManyUpdates)
{
    for (int value = 0; value <= 500; ++value)
        publish(value);
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasMetric("pending", HasValue(500))));
}

TEST_F(PublishingToAFakeService, DoesNotShowWithdrawnValues)
{
    publish(1);
    pending = vigil::ScalarHandle();
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", Not(HasMetric("pending"))));
}

TEST_F(PublishingToAFakeService, HidesItsOwnMark)
{
    publish(1);
    for (const auto& cell : service.published().cells())
        EXPECT_EQ(cell.first.rfind("1.3.6.1.4.1.32473.127.", 0), 0u) << cell.first;
}

TEST_F(PublishingToAFakeService, CountsNotifications)
{
    vigil::VigilSnmpInterface& facade = vigil::VigilSnmpInterface::instance();
    const vigil::Oid oid = vigil::Oid::fromStdString(ownCell);
    facade.sendValue(oid, 7, 0);
    EXPECT_EQ(service.published().cell(ownCell)->notifications, 0);
    facade.sendValue(oid, 8, 1);
    EXPECT_EQ(service.published().cell(ownCell)->notifications, 1);
    EXPECT_THAT(service.published(), HasNumber(ownCell, 8));
    facade.unsetOid(oid);
    EXPECT_EQ(service.published().cell(ownCell), nullptr);
}

TEST_F(PublishingToAFakeService, ShowsWhatAnotherThreadPublishes)
{
    std::thread other([this] { publish(3); });
    EXPECT_THAT(service, Publishes(HasCheck("shop", "orders", HasMetric("pending", HasValue(3)))));
    other.join();
}

TEST_F(PublishingToAFakeService, IsOverWithTheLastCheck)
{
    publish(1);
    EXPECT_THAT(service, Publishes(HasCheck("shop", "orders")));
    check = vigil::CheckHandle();
    EXPECT_TRUE(service.waitForDisconnection());
    EXPECT_THAT(service, Publishes(HasNoChecks()));
    EXPECT_EQ(service.connectionsSoFar(), 1);
}

TEST(FakeService, SetsTheLibrarysPortAndSetsItBack)
{
    qputenv("VIGIL_SERVICE_PORT", "1234");
    {
        const FakeService service;
        EXPECT_EQ(qgetenv("VIGIL_SERVICE_PORT"), QByteArray::number(service.port()));
    }
    EXPECT_EQ(qgetenv("VIGIL_SERVICE_PORT"), "1234");
    qunsetenv("VIGIL_SERVICE_PORT");
    {
        const FakeService service;
    }
    EXPECT_FALSE(qEnvironmentVariableIsSet("VIGIL_SERVICE_PORT"));
}

// As an assignment to a std::unique_ptr does.
TEST(FakeService, TheNewestServiceLeftHasTheLibrarysPort)
{
    qputenv("VIGIL_SERVICE_PORT", "1234");
    const auto portIs = [](int port) { return qgetenv("VIGIL_SERVICE_PORT") == QByteArray::number(port); };
    auto first = std::make_unique<FakeService>();
    auto second = std::make_unique<FakeService>();
    auto third = std::make_unique<FakeService>();
    first.reset();
    EXPECT_TRUE(portIs(third->port()));
    third.reset();
    EXPECT_TRUE(portIs(second->port()));
    second.reset();
    EXPECT_TRUE(portIs(1234));
    qunsetenv("VIGIL_SERVICE_PORT");
}

TEST(FakeService, ServicesOfOneProcessHaveDifferentPorts)
{
    const FakeService first;
    const FakeService second;
    EXPECT_NE(first.port(), second.port());
}

TEST(FakeService, ServesOneLifeOfTheLibraryAfterTheOther)
{
    const support::LibraryLog log;
    for (int life = 1; life <= 2; ++life) {
        FakeService service;
        const vigil::CheckHandle check("shop", std::to_string(life));
        EXPECT_TRUE(service.settle());
        EXPECT_THAT(service.snapshot(), HasCheck("shop", std::to_string(life)));
    }
}

TEST(FakeService, MayEndBeforeTheChecks)
{
    const support::LibraryLog log;
    vigil::CheckHandle check;
    {
        FakeService service;
        check = vigil::CheckHandle("shop", "orders");
        EXPECT_TRUE(service.waitForConnection());
    }
    check.update();
}

TEST(FakeService, WaitsForTheLongestTimeout)
{
    const support::LibraryLog log;
    FakeService service;
    service.setTimeout((FakeService::Milliseconds::max)());
    const vigil::CheckHandle check("shop", "orders");
    EXPECT_TRUE(service.waitForConnection());
    EXPECT_TRUE(service.settle());
    EXPECT_TRUE(service.waitUntil([](const PublishedTable& table) { return table.check("shop", "orders"); }));
}

TEST(FakeService, WaitsEndAtTheTimeout)
{
    FakeService service;
    EXPECT_EQ(service.timeout(), std::chrono::seconds(30));
    service.setTimeout(std::chrono::milliseconds(1));
    EXPECT_FALSE(service.waitForConnection());
    EXPECT_TRUE(service.waitForDisconnection());
    EXPECT_FALSE(service.settle());
    EXPECT_FALSE(service.waitUntil([](const PublishedTable& table) { return !table.cells().empty(); }));
    EXPECT_EQ(service.published().connections(), 0);
}
