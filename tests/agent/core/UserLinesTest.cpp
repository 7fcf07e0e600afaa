// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/core/Log.h"
#include "agent/core/UserLines.h"
#include "support/ManualClock.h"

using agent::UserLines;

namespace {

class UserLinesTest : public testing::Test
{
protected:
    UserLinesTest() { testing::internal::CaptureStderr(); }

    static void warn(const agent::User& user, int times)
    {
        for (int i = 0; i < times; ++i)
            agent::log::warning(user, QStringLiteral("text"));
    }

    /// The lines logged since the last call.
    static QStringList lines()
    {
        const std::string text = testing::internal::GetCapturedStderr();
        testing::internal::CaptureStderr();
        return QString::fromStdString(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    ~UserLinesTest() override { testing::internal::GetCapturedStderr(); }

    support::ManualClock clock;
    UserLines userLines{clock};
};

} // namespace

TEST_F(UserLinesTest, AUserHasAHundredLinesASecond)
{
    warn("1001", 58'000);
    EXPECT_EQ(lines().size(), UserLines::maxPerSecond);
    clock.advance(1000);
    EXPECT_EQ(lines(),
              QStringList{QStringLiteral("vigil-agent: warning: 57900 more lines about applications of "
                                         "uid 1001 are left out of this second")});
    warn("1001", 5);
    EXPECT_EQ(lines().size(), 5);
    clock.advance(1000);
    EXPECT_TRUE(lines().isEmpty());
}

TEST_F(UserLinesTest, OtherUsersHaveTheirOwn)
{
    warn("1001", 200);
    warn("0", 10);
    warn({}, 10);
    EXPECT_EQ(lines().size(), UserLines::maxPerSecond + 20);
}

TEST_F(UserLinesTest, LinesOfTheAgentItselfAlwaysPass)
{
    warn("1001", 200);
    lines();
    for (int i = 0; i < 200; ++i)
        agent::log::warning(QStringLiteral("text"));
    EXPECT_EQ(lines().size(), 200);
}

TEST_F(UserLinesTest, DetailsCountToo)
{
    agent::log::setVerbose(true);
    for (int i = 0; i < 200; ++i)
        agent::log::detail(agent::User("1001"), [] { return QStringLiteral("text"); });
    agent::log::setVerbose(false);
    EXPECT_EQ(lines().size(), UserLines::maxPerSecond);
}
