// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/cells/UpdateWatch.h"
#include "support/ManualClock.h"

using agent::ObjectId;
using agent::UpdateWatch;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

constexpr qint64 minute = 60'000;
constexpr qint64 hour = 60 * minute;

const ObjectId heartbeat{1};
const ObjectId job{2};

class UpdateWatchTest : public testing::Test
{
protected:
    void updateEvery(qint64 interval, const ObjectId& check, int times = 11)
    {
        for (int i = 0; i < times; ++i) {
            clock.advance(interval);
            watch.handleUpdate(check);
        }
    }

    support::ManualClock clock;
    std::vector<std::pair<ObjectId, qint64>> silent;
    UpdateWatch watch{clock, UpdateWatch::learned, [this](const ObjectId& check, qint64 ms) {
                          silent.push_back({check, ms});
                      }};
};

} // namespace

TEST_F(UpdateWatchTest, WatchesAnHourlyJobAndAHeartbeatTogether)
{
    updateEvery(hour, job);
    updateEvery(minute, heartbeat);
    clock.advance(4 * minute - 1);
    EXPECT_THAT(silent, IsEmpty());
    clock.advance(1);
    EXPECT_THAT(silent, ElementsAre(Pair(heartbeat, 4 * minute)));
    clock.advance(4 * hour);
    EXPECT_THAT(silent, ElementsAre(Pair(heartbeat, 4 * minute), Pair(job, 4 * hour)));
}

TEST_F(UpdateWatchTest, LeavesChecksWithoutARhythmAlone)
{
    watch.handleUpdate(job);
    updateEvery(minute, heartbeat, 5);
    clock.advance(10'000 * hour);
    EXPECT_THAT(silent, IsEmpty());
}

TEST_F(UpdateWatchTest, ANewApplicationKeepsTheRhythm)
{
    updateEvery(minute, heartbeat);
    watch.pause(heartbeat);
    clock.advance(hour);
    EXPECT_THAT(silent, IsEmpty()) << "its application is lost";
    watch.handleTakenOver(heartbeat);
    clock.advance(4 * minute);
    EXPECT_THAT(silent, ElementsAre(Pair(heartbeat, 4 * minute)));
}

TEST_F(UpdateWatchTest, ARemovedCheckIsNotWatched)
{
    updateEvery(minute, heartbeat);
    watch.remove(heartbeat);
    clock.advance(hour);
    EXPECT_THAT(silent, IsEmpty());
    updateEvery(minute, heartbeat, 10);
    clock.advance(hour);
    EXPECT_THAT(silent, IsEmpty()) << "the rhythm is forgotten";
}

TEST_F(UpdateWatchTest, AFixedTimeIsTheSameForAll)
{
    UpdateWatch fixed(clock, minute, [this](const ObjectId& check, qint64 ms) {
        silent.push_back({check, ms});
    });
    fixed.handleUpdate(job);
    clock.advance(minute);
    EXPECT_THAT(silent, ElementsAre(Pair(job, minute)));
}
