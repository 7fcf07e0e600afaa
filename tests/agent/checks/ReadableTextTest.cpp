// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/checks/ReadableText.h"

using agent::readableText;

namespace {

constexpr const char* replacement = "\xef\xbf\xbd";

} // namespace

TEST(ReadableText, KeepsUtf8)
{
    EXPECT_EQ(readableText("plain ~", 255), "plain ~");
    EXPECT_EQ(readableText("Zähler für Öl 油 😀", 255), "Zähler für Öl 油 😀");
}

TEST(ReadableText, ReplacesInvalidUtf8)
{
    EXPECT_EQ(readableText("a\xff", 255), std::string("a") + replacement);
    EXPECT_EQ(readableText("\xed\xa0\x80z", 255).back(), 'z'); // half of a surrogate pair
    EXPECT_EQ(readableText("a\xc3", 255), std::string("a") + replacement);
}

TEST(ReadableText, ReplacesControlCharacters)
{
    EXPECT_EQ(readableText("a\nb", 255), std::string("a") + replacement + "b");
    EXPECT_EQ(readableText(std::string("a\0b", 3), 255), std::string("a") + replacement + "b");
    EXPECT_EQ(readableText("a\xc2\x9b", 255), std::string("a") + replacement);
}

TEST(ReadableText, CutsBetweenCharacters)
{
    EXPECT_EQ(readableText("abc", 2), "ab");
    EXPECT_EQ(readableText("aä", 2), "a");
    const std::string grown = readableText(std::string(255, '\xff'), 255); // three bytes for each of these
    EXPECT_EQ(grown.size(), 255U);
    EXPECT_EQ(grown.substr(252), replacement);
}
