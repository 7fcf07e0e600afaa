// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <string>

#include "HostValues.h"

using testing::AllOf;
using testing::Each;
using testing::Field;
using testing::Ge;
using testing::Gt;
using testing::IsEmpty;
using testing::Le;
using testing::Not;
using testing::Optional;

TEST(HostValues, AreInTheirPossibleRanges)
{
    EXPECT_THAT(host::loadPerCore(), Optional(Ge(0.0)));
    EXPECT_THAT(host::memoryUsePercent(), Optional(AllOf(Gt(0.0), Le(100.0))));
    EXPECT_THAT(host::swapUsePercent(), Optional(AllOf(Ge(0.0), Le(100.0))));
    EXPECT_THAT(host::uptimeHours(), Optional(Gt(0.0)));
    EXPECT_THAT(host::processCount(), Optional(Ge(1.0)));
}

TEST(HostValues, DisksHaveANameAndAUse)
{
    const auto disks = host::disks();
    ASSERT_TRUE(disks);
    EXPECT_THAT(*disks, Each(Field(&host::Disk::usePercent, AllOf(Ge(0.0), Le(100.0)))));
    EXPECT_THAT(*disks, Each(Field(&host::Disk::name, Not(IsEmpty()))));
}
