// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <initializer_list>

#include "agent/cells/UpdateRhythm.h"

using agent::UpdateRhythm;

namespace {

class UpdateRhythmTest : public testing::Test
{
protected:
    void updateAfter(std::initializer_list<qint64> intervals)
    {
        for (const qint64 interval : intervals) {
            now += interval;
            rhythm.update(now);
        }
    }

    void updateTimes(int times, qint64 interval)
    {
        for (int i = 0; i < times; ++i)
            updateAfter({interval});
    }

    UpdateRhythm rhythm;
    qint64 now = 0;
};

} // namespace

TEST_F(UpdateRhythmTest, IsLearnedFromTenIntervals)
{
    updateTimes(10, 60'000);
    EXPECT_EQ(rhythm.longestSilenceMs(), std::nullopt) << "nine intervals";
    updateTimes(1, 60'000);
    EXPECT_EQ(rhythm.longestSilenceMs(), 240'000);
}

TEST_F(UpdateRhythmTest, TheLongestIntervalMayBeThreeTimesTheShortest)
{
    updateTimes(10, 20'000);
    updateAfter({60'000});
    EXPECT_EQ(rhythm.longestSilenceMs(), 240'000);
    updateAfter({60'001});
    EXPECT_EQ(rhythm.longestSilenceMs(), std::nullopt);
}

TEST_F(UpdateRhythmTest, OnlyTheLastTenIntervalsCount)
{
    updateTimes(11, 20'000);
    updateAfter({3'600'000});
    EXPECT_EQ(rhythm.longestSilenceMs(), std::nullopt);
    updateTimes(9, 20'000);
    EXPECT_EQ(rhythm.longestSilenceMs(), std::nullopt);
    updateTimes(1, 20'000);
    EXPECT_EQ(rhythm.longestSilenceMs(), 80'000);
}

TEST_F(UpdateRhythmTest, ASilenceIsNeverTooLongBelow30Seconds)
{
    updateTimes(11, 1'000);
    EXPECT_EQ(rhythm.longestSilenceMs(), 30'000);
}

TEST_F(UpdateRhythmTest, ABurstIsOneUpdate)
{
    updateTimes(100, 9);
    EXPECT_EQ(rhythm.longestSilenceMs(), std::nullopt);
    for (int i = 0; i < 11; ++i)
        updateAfter({60'000, 1, 1});
    EXPECT_EQ(rhythm.longestSilenceMs(), 4 * 60'002);
}

TEST_F(UpdateRhythmTest, ARestartIsNoInterval)
{
    updateTimes(11, 60'000);
    now += 3'600'000;
    rhythm.restart(now);
    updateAfter({60'000});
    EXPECT_EQ(rhythm.longestSilenceMs(), 240'000);
}
