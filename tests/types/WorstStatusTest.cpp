// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "types/WorstStatus.h"

using vigil::HealthStatus;
using vigil::Result;

namespace {

constexpr HealthStatus ok = HealthStatus::Ok;
constexpr HealthStatus warning = HealthStatus::Warning;
constexpr HealthStatus critical = HealthStatus::Critical;
constexpr HealthStatus unknown = HealthStatus::Unknown;

HealthStatus worstOf(std::initializer_list<HealthStatus> statuses)
{
    std::vector<ResultEntry> entries;
    for (const HealthStatus status : statuses) {
        entries.emplace_back();
        entries.back().result = Result("metric", status, "");
    }
    return worstStatus(entries);
}

} // namespace

TEST(WorstStatus, OfAnEmptyListIsUnknown)
{
    EXPECT_EQ(worstOf({}), unknown);
}

TEST(WorstStatus, OfOneEntryIsItsStatus)
{
    for (const HealthStatus status : {ok, warning, critical, unknown})
        EXPECT_EQ(worstOf({status}), status);
}

TEST(WorstStatus, UnknownIsWorseThanOk)
{
    EXPECT_EQ(worstOf({ok, unknown}), unknown);
    EXPECT_EQ(worstOf({unknown, ok}), unknown);
}

TEST(WorstStatus, WarningIsWorseThanUnknown)
{
    EXPECT_EQ(worstOf({unknown, warning}), warning);
    EXPECT_EQ(worstOf({warning, unknown}), warning);
}

TEST(WorstStatus, CriticalIsTheWorst)
{
    EXPECT_EQ(worstOf({warning, critical, ok}), critical);
    EXPECT_EQ(worstOf({critical, unknown, warning}), critical);
    EXPECT_EQ(worstOf({unknown, critical}), critical);
}

TEST(WorstStatus, OfOkEntriesIsOk)
{
    EXPECT_EQ(worstOf({ok, ok, ok}), ok);
}
