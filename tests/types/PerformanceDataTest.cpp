// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "types/PerformanceData.h"
#include "types/ResultEntry.h"

using vigil::HealthStatus;
using vigil::Range;

TEST(PerformanceData, ADefaultObjectHasEmptyTextsAndTheValueZero)
{
    const PerformanceData data;
    EXPECT_EQ(data.getLabel(), "");
    EXPECT_EQ(data.getValue(), 0.0);
    EXPECT_EQ(data.getUnit(), "");
    EXPECT_EQ(data.getWarning(), "");
    EXPECT_EQ(data.getCritical(), "");
}

TEST(PerformanceData, ReturnsTheValuesSet)
{
    PerformanceData data;
    data.setLabel("temperature");
    data.setValue(-3.25);
    data.setUnit("\xC2\xB0"
                 "C");
    EXPECT_EQ(data.getLabel(), "temperature");
    EXPECT_EQ(data.getValue(), -3.25);
    EXPECT_EQ(data.getUnit(), "\xC2\xB0"
                              "C");
}

TEST(PerformanceData, StoresRangesAsText)
{
    PerformanceData data;
    data.setWarning(Range::CreateThresholdAbove(80));
    data.setCritical(Range::CreateInverseRange(10, 20));
    EXPECT_EQ(data.getWarning(), "~:80");
    EXPECT_EQ(data.getCritical(), "@10:20");
}

TEST(PerformanceData, DistinguishesOffFromUnset)
{
    PerformanceData data;
    data.setWarning(Range::CreateNoLimit());
    data.setCritical(Range());
    EXPECT_EQ(data.getWarning(), "off");
    EXPECT_EQ(data.getCritical(), "");
}

TEST(ResultEntry, ANewEntryHasADefaultResultAndDefaultPerformanceData)
{
    const ResultEntry entry;
    EXPECT_EQ(entry.result.getName(), "");
    EXPECT_EQ(entry.result.getStatus(), HealthStatus::Unknown);
    EXPECT_EQ(entry.result.getSummary(), "");
    ASSERT_NE(entry.perfData, nullptr);
    EXPECT_EQ(entry.perfData->getLabel(), "");
}

TEST(ResultEntry, MovingAnEntryLeavesTheSourceWithoutPerformanceData)
{
    ResultEntry source;
    const PerformanceData* data = source.perfData.get();
    const ResultEntry target(std::move(source));
    EXPECT_EQ(target.perfData.get(), data);
    EXPECT_EQ(source.perfData, nullptr); // NOLINT(bugprone-use-after-move): tested here
}

TEST(ResultEntry, AGrowingVectorKeepsThePerformanceData)
{
    std::vector<ResultEntry> entries;
    std::vector<const PerformanceData*> data;
    for (int i = 0; i < 20; ++i) {
        entries.emplace_back();
        data.push_back(entries.back().perfData.get());
    }
    for (std::size_t i = 0; i < entries.size(); ++i)
        EXPECT_EQ(entries[i].perfData.get(), data[i]);
}
