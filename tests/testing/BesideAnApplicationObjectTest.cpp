// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <QCoreApplication>

#include "testing/TestedApplication.h"

using vigil::HealthStatus;
using vigil::test::HasCheck;
using vigil::test::HasStatus;
using vigil::test::SetResult;

class BesideAnApplicationObject : public TestedApplication
{
};

TEST_F(BesideAnApplicationObject, PublishesWhileTheEventLoopRests)
{
    ASSERT_NE(QCoreApplication::instance(), nullptr);
    publish(42);
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(HealthStatus::Warning)));
}

TEST_F(BesideAnApplicationObject, AnswersAManager)
{
    pending.setRangeHandler([](vigil::RangeKind, const vigil::Range&) { return true; });
    publish(42);
    ASSERT_TRUE(service.settle());
    EXPECT_EQ(service.setWarningRange("shop", "orders", "pending", "~:60"), SetResult::Accepted);
    check.update();
    EXPECT_THAT(service.published(), HasCheck("shop", "orders", HasStatus(HealthStatus::Ok)));
}
