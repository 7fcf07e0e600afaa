// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/Lifecycle.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using Event = Lifecycle::Event;
using State = Lifecycle::State;

namespace {

const std::vector<Event> allEvents = {Event::Init,         Event::NoThread,   Event::Started,    Event::Stop,
                                      Event::ThreadsEnded, Event::ThreadLost, Event::ProcessEnds};

/// One state: the events on the way to it, and the next state for each event it does not ignore.
struct Row
{
    State state;
    std::vector<Event> way;
    std::vector<std::pair<Event, State>> transitions;
};

const std::vector<Row> table = {
    {State::Stopped, {}, {{Event::Init, State::Starting}, {Event::ProcessEnds, State::OutOfUse}}},
    {State::Starting,
     {Event::Init},
     {{Event::NoThread, State::Stopped},
      {Event::Started, State::Running},
      {Event::ProcessEnds, State::OutOfUse}}},
    {State::Running,
     {Event::Init, Event::Started},
     {{Event::Stop, State::Stopping}, {Event::ProcessEnds, State::OutOfUse}}},
    {State::Stopping,
     {Event::Init, Event::Started, Event::Stop},
     {{Event::ThreadsEnded, State::Stopped},
      {Event::ThreadLost, State::OutOfUse},
      {Event::ProcessEnds, State::OutOfUse}}},
    {State::OutOfUse, {Event::ProcessEnds}, {}},
};

State nextOf(const Row& row, Event event)
{
    for (const auto& [known, next] : row.transitions) {
        if (known == event)
            return next;
    }
    return row.state;
}

} // namespace

TEST(Lifecycle, TakesTheTransitionsOfEachStateAndIgnoresAllOtherEvents)
{
    for (const Row& row : table) {
        for (const Event event : allEvents) {
            Lifecycle life;
            for (const Event step : row.way)
                EXPECT_TRUE(life.on(step));
            ASSERT_EQ(life.state(), row.state);
            EXPECT_EQ(life.on(event), nextOf(row, event) != row.state);
            EXPECT_EQ(life.state(), nextOf(row, event));
        }
    }
}

TEST(Lifecycle, TheLibraryCanStartAgainAfterAStop)
{
    Lifecycle life;
    for (const Event event : {Event::Init, Event::Started, Event::Stop, Event::ThreadsEnded, Event::Init})
        EXPECT_TRUE(life.on(event));
    EXPECT_EQ(life.state(), State::Starting);
}
