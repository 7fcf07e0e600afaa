// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <type_traits>

#include "agent/core/Error.h"

using agent::Error;

TEST(Error, IsSuccessByDefault)
{
    const Error error;
    EXPECT_FALSE(error);
    EXPECT_TRUE(error.text().isEmpty());
}

TEST(Error, KeepsTheTextForTheOperator)
{
    const Error error(QStringLiteral("cannot read the file"));
    EXPECT_TRUE(error);
    EXPECT_EQ(error.text(), QStringLiteral("cannot read the file"));
}

TEST(Error, StaysAnErrorWhenPassedOn)
{
    const auto fail = [] { return Error(QStringLiteral("no port is free")); };
    const auto passOn = [&fail]() -> Error {
        if (const Error error = fail())
            return error;
        return {};
    };
    EXPECT_EQ(passOn().text(), QStringLiteral("no port is free"));
}

// No implicit conversion may turn a text into an error, or an error into a number.
TEST(Error, ConvertsOnlyWhenAsked)
{
    EXPECT_FALSE((std::is_convertible_v<QString, Error>));
    EXPECT_FALSE((std::is_convertible_v<Error, bool>));
}
