// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <vector>

#include "agent/checks/Mutes.h"
#include "support/ManualClock.h"

using agent::Mutes;
using agent::ObjectId;

namespace {

class MutesTest : public testing::Test
{
protected:
    static constexpr qint64 hour = 3'600'000;

    MutesTest()
    {
        QObject::connect(&mutes, &Mutes::changed,
                         [this](const ObjectId& check) { changed.push_back(check); });
    }

    const ObjectId web{1};
    const ObjectId db{2};
    support::ManualClock clock;
    Mutes mutes{clock};
    std::vector<ObjectId> changed;
};

} // namespace

TEST_F(MutesTest, AMuteEndsWithItsTime)
{
    EXPECT_FALSE(mutes.mute(web, hour));
    EXPECT_EQ(mutes.untilOf(web), clock.nowUtc().addMSecs(hour));
    clock.advance(hour - 1);
    EXPECT_TRUE(mutes.contains(web));
    EXPECT_FALSE(mutes.contains(db));
    clock.advance(1);
    EXPECT_FALSE(mutes.contains(web));
    EXPECT_TRUE(mutes.untilOf(web).isNull());
    EXPECT_EQ(changed, (std::vector<ObjectId>{web, web}));
}

TEST_F(MutesTest, ANewTimeReplacesTheOldOne)
{
    EXPECT_FALSE(mutes.mute(web, 2 * hour));
    EXPECT_FALSE(mutes.mute(web, hour));
    clock.advance(hour);
    EXPECT_FALSE(mutes.contains(web));
}

TEST_F(MutesTest, AnUnmuteEndsItAtOnce)
{
    EXPECT_FALSE(mutes.mute(web, hour));
    EXPECT_TRUE(mutes.unmute(web));
    EXPECT_FALSE(mutes.contains(web));
    EXPECT_FALSE(mutes.unmute(web));
    clock.advance(2 * hour);
    EXPECT_EQ(changed.size(), 2U) << "the time of an ended mute means nothing";
}

TEST_F(MutesTest, TheirNumberIsLimited)
{
    for (unsigned int i = 0; i < Mutes::most; ++i)
        EXPECT_FALSE(mutes.mute({i}, hour));
    EXPECT_TRUE(mutes.mute({Mutes::most}, hour));
    EXPECT_FALSE(mutes.mute({0}, 2 * hour)) << "it is muted already";
    EXPECT_EQ(mutes.all().size(), Mutes::most);
}

TEST_F(MutesTest, ARestartLeavesOutThoseOver)
{
    mutes.restore(
        {{web, {clock.nowUtc().addMSecs(hour), 2 * hour}}, {db, {clock.nowUtc().addMSecs(-1), 2 * hour}}});
    EXPECT_EQ(mutes.all().size(), 1U);
    clock.advance(hour);
    EXPECT_FALSE(mutes.contains(web));
}

// A machine whose clock starts in the past made a year of two hours.
TEST_F(MutesTest, ARestartWithAWrongTimeMakesNoMuteLonger)
{
    mutes.restore({{web, {clock.nowUtc().addYears(50), hour}},
                   {db, {clock.nowUtc().addYears(50), Mutes::longestMs + hour}}});
    EXPECT_EQ(mutes.untilOf(web), clock.nowUtc().addMSecs(hour));
    EXPECT_EQ(mutes.untilOf(db), clock.nowUtc().addMSecs(Mutes::longestMs));
    clock.advance(hour);
    EXPECT_FALSE(mutes.contains(web));
}

// The end shown, and saved for the next run, was still that of the wrong time.
TEST_F(MutesTest, AChangeOfTheHostsTimeMovesTheEndShown)
{
    EXPECT_FALSE(mutes.mute(web, 2 * hour));
    for (const qint64 backMs : {50 * hour, -100 * hour}) {
        clock.setBack(backMs);
        EXPECT_EQ(mutes.untilOf(web), clock.nowUtc().addMSecs(2 * hour));
        EXPECT_EQ(mutes.all().at(web).until, mutes.untilOf(web));
        EXPECT_EQ(mutes.all().at(web).forMs, 2 * hour);
    }
    clock.advance(2 * hour - 1);
    EXPECT_TRUE(mutes.contains(web));
    clock.advance(1);
    EXPECT_FALSE(mutes.contains(web));
}

TEST_F(MutesTest, ASmallDriftLeavesTheEndShownAlone)
{
    EXPECT_FALSE(mutes.mute(web, hour));
    const QDateTime until = mutes.untilOf(web);
    clock.setBack(900);
    EXPECT_EQ(mutes.untilOf(web), until);
}
