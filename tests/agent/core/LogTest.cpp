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

// U+0085 and U+2028 break a line in some viewers, and U+009B starts a command to a terminal.
TEST_F(LogSink, GetsControlCharactersAsBlanks)
{
    const QString text = QStringLiteral("a\r\n\tb\x1b[31mc\x7f%1d%2e%3f%4\u00fcg")
                             .arg(QChar(0x85), QChar(0x9b), QChar(0x2028), QChar(0x2029));
    agent::log::info(text);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].second, QStringLiteral("a   b [31mc  d e f \u00fcg"));
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
