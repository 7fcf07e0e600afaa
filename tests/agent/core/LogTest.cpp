// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "agent/core/Log.h"
#include "support/QtPrinters.h"

namespace {

class LogSink : public testing::Test
{
protected:
    LogSink()
    {
        agent::log::setSink([this](agent::log::Severity severity, const QString& text) {
            if (isFull)
                return false;
            lines.emplace_back(severity, text);
            return true;
        });
    }

    ~LogSink() override { agent::log::setSink(nullptr); }

    std::vector<std::pair<agent::log::Severity, QString>> lines;
    bool isFull = false;
};

} // namespace

TEST_F(LogSink, GetsEachMessageWithItsSeverity)
{
    agent::log::error(QStringLiteral("one"));
    agent::log::warning(QStringLiteral("two\nlines"));
    agent::log::info(QStringLiteral("three"));
    agent::log::debug(QStringLiteral("four"));
    const std::vector<std::pair<agent::log::Severity, QString>> expected{
        {agent::log::Severity::Error, QStringLiteral("one")},
        {agent::log::Severity::Warning, QStringLiteral("two lines")},
        {agent::log::Severity::Info, QStringLiteral("three")},
        {agent::log::Severity::Debug, QStringLiteral("four")}};
    EXPECT_EQ(lines, expected);
}

TEST_F(LogSink, TheNextLineTellsHowManyAreLost)
{
    isFull = true;
    agent::log::info(QStringLiteral("lost"));
    agent::log::info(QStringLiteral("lost"));
    isFull = false;
    agent::log::info(QStringLiteral("here"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].second.startsWith(QStringLiteral("2 lines are missing here")));
    EXPECT_EQ(lines[1].second, QStringLiteral("here"));
}
