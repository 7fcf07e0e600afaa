// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/applications/CellWarnings.h"

using agent::CellWarnings;

namespace {

class CellWarningsTest : public testing::Test
{
protected:
    CellWarningsTest() { testing::internal::CaptureStderr(); }

    /// The number of lines logged so far.
    static std::ptrdiff_t lines()
    {
        const std::string text = testing::internal::GetCapturedStderr();
        return std::count(text.begin(), text.end(), '\n');
    }

    CellWarnings warnings;
};

} // namespace

TEST_F(CellWarningsTest, WarnsOnceAboutEachCellOfAnApplication)
{
    for (int i = 0; i < 3; ++i) {
        warnings.warn({1}, {1, 2}, QStringLiteral("text"));
        warnings.warn({1}, {1, 3}, QStringLiteral("text"));
        warnings.warn({2}, {1, 2}, QStringLiteral("text"));
    }
    EXPECT_EQ(lines(), 3);
}

TEST_F(CellWarningsTest, WarnsAgainAfterTheApplicationIsForgotten)
{
    warnings.warn({1}, {1, 2}, QStringLiteral("text"));
    warnings.forget(1);
    warnings.warn({1}, {1, 2}, QStringLiteral("text"));
    EXPECT_EQ(lines(), 2);
}

TEST_F(CellWarningsTest, EndsWithALineAboutTheSuppression)
{
    for (unsigned int i = 0; i < CellWarnings::maxPerApplication + 100; ++i)
        warnings.warn({1}, {1, i}, QStringLiteral("text"));
    warnings.warn({2}, {1, 2}, QStringLiteral("text"));
    EXPECT_EQ(lines(), std::ptrdiff_t(CellWarnings::maxPerApplication) + 2);
}
