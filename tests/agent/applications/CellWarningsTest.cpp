// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/applications/CellWarnings.h"

using agent::CellWarnings;
using agent::ObjectId;

namespace {

class CellWarningsTest : public testing::Test
{
protected:
    CellWarningsTest() { testing::internal::CaptureStderr(); }

    /// The lines so far.
    static std::ptrdiff_t lines()
    {
        const std::string text = testing::internal::GetCapturedStderr();
        return std::count(text.begin(), text.end(), '\n');
    }

    CellWarnings warnings;
};

} // namespace

TEST_F(CellWarningsTest, EachCellOfEachApplicationIsWarnedAboutOnce)
{
    for (int i = 0; i < 3; ++i) {
        warnings.warn(1, {1, 2}, QStringLiteral("text"));
        warnings.warn(1, {1, 3}, QStringLiteral("text"));
        warnings.warn(2, {1, 2}, QStringLiteral("text"));
    }
    EXPECT_EQ(lines(), 3);
}

TEST_F(CellWarningsTest, AreRepeatedForTheNextConnection)
{
    warnings.warn(1, {1, 2}, QStringLiteral("text"));
    warnings.forget(1);
    warnings.warn(1, {1, 2}, QStringLiteral("text"));
    EXPECT_EQ(lines(), 2);
}

TEST_F(CellWarningsTest, EndWithALineThatSaysSo)
{
    for (unsigned int i = 0; i < CellWarnings::maxPerOwner + 100; ++i)
        warnings.warn(1, {1, i}, QStringLiteral("text"));
    warnings.warn(2, {1, 2}, QStringLiteral("text"));
    EXPECT_EQ(lines(), std::ptrdiff_t(CellWarnings::maxPerOwner) + 2);
}

TEST_F(CellWarningsTest, CutIdentifiersShort)
{
    lines();
    EXPECT_EQ(agent::shortText({1, 2}), QStringLiteral("1.2"));
    EXPECT_EQ(agent::shortText(ObjectId(200, 1)).size(), 2 * 128 + 3);
}
