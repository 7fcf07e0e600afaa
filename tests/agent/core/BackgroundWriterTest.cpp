// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <vector>

#include "agent/core/BackgroundWriter.h"
#include "support/Deadline.h"

namespace {

/// Never destroyed: its thread goes on.
agent::BackgroundWriter& makeWriter()
{
    static std::vector<agent::BackgroundWriter*> all;
    all.push_back(new agent::BackgroundWriter);
    return *all.back();
}

} // namespace

TEST(BackgroundWriter, WritesInOrder)
{
    agent::BackgroundWriter& writer = makeWriter();
    const auto written = std::make_shared<std::vector<int>>();
    std::promise<void> done;
    for (int number = 0; number < 100; ++number)
        EXPECT_TRUE(writer.add(1, [written, number] { written->push_back(number); }));
    EXPECT_TRUE(writer.add(1, [&done] { done.set_value(); }));
    ASSERT_EQ(done.get_future().wait_for(std::chrono::milliseconds(support::deadlineMs)),
              std::future_status::ready);
    ASSERT_EQ(written->size(), 100U);
    for (int number = 0; number < 100; ++number)
        EXPECT_EQ(written->at(static_cast<size_t>(number)), number);
}

TEST(BackgroundWriter, TakesNoMoreThanItsLimitWhileAWriteHangs)
{
    agent::BackgroundWriter& writer = makeWriter();
    std::promise<void> go;
    std::promise<void> done;
    constexpr int half = 32'768;
    EXPECT_TRUE(writer.add(half, [&go] { go.get_future().wait(); }));
    EXPECT_TRUE(writer.add(half, [&done] { done.set_value(); }));
    EXPECT_FALSE(writer.add(1, [] {}));
    go.set_value();
    ASSERT_EQ(done.get_future().wait_for(std::chrono::milliseconds(support::deadlineMs)),
              std::future_status::ready);
    writer.waitUntilWritten();
    EXPECT_TRUE(writer.add(1, [] {}));
}
