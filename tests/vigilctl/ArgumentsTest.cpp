// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "support/QtPrinters.h"
#include "vigilctl/Arguments.h"

using vigilctl::Arguments;
using vigilctl::secondsIn;

namespace {

/// What is wrong with the words after the program's name.
QString problemOf(const char* words, Arguments& arguments)
{
    return vigilctl::readArguments(
        QStringLiteral("vigilctl %1").arg(QLatin1String(words)).split(QLatin1Char(' ')), arguments);
}

bool isWrong(const char* words)
{
    Arguments arguments;
    return !problemOf(words, arguments).isEmpty();
}

} // namespace

TEST(Arguments, ADurationHasOneUnit)
{
    EXPECT_EQ(secondsIn(QStringLiteral("90s")), 90);
    EXPECT_EQ(secondsIn(QStringLiteral("30m")), 1800);
    EXPECT_EQ(secondsIn(QStringLiteral("2h")), 7200);
    EXPECT_EQ(secondsIn(QStringLiteral("366d")), 366 * 86'400);
    for (const char* text : {"", "2", "h", "0s", "-1h", "2 h", "1h30m", "367d", "99999999d", "2H", "1.5h"})
        EXPECT_FALSE(secondsIn(QLatin1String(text))) << text;
}

TEST(Arguments, CommandsHaveTheirWords)
{
    Arguments arguments;
    EXPECT_EQ(problemOf("mute shop/web 2h --json", arguments), QString());
    EXPECT_EQ(arguments.command, Arguments::Command::Mute);
    EXPECT_EQ(arguments.target, QStringLiteral("shop/web"));
    EXPECT_EQ(arguments.seconds, 7200);
    EXPECT_TRUE(arguments.isJson);
    EXPECT_EQ(problemOf("forget 7 --control /run/other", arguments), QString());
    EXPECT_EQ(arguments.command, Arguments::Command::Forget);
    EXPECT_EQ(arguments.controlPath, QStringLiteral("/run/other"));
}

TEST(Arguments, WrongOnesAreRefused)
{
    for (const char* words : {"mute", "mute shop/web", "mute shop/web soon", "mute shop/web 2h more",
                              "unmute", "forget", "forget 1 2", "forget 1 --url http://127.0.0.1:1/",
                              "status --url http://127.0.0.1:1/ --control /run/other"})
        EXPECT_TRUE(isWrong(words)) << words;
}
