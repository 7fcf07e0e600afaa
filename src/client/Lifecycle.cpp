// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/Lifecycle.h"

namespace {

using State = Lifecycle::State;
using Event = Lifecycle::Event;

struct Transition
{
    State from;
    Event event;
    State to;
};

constexpr Transition transitions[] = {
    {State::Stopped, Event::Init, State::Starting},
    {State::Starting, Event::NoThread, State::Stopped},
    {State::Starting, Event::Started, State::Running},
    {State::Running, Event::Stop, State::Stopping},
    {State::Stopping, Event::ThreadsEnded, State::Stopped},
    {State::Stopping, Event::ThreadLost, State::OutOfUse},
};

} // namespace

bool Lifecycle::on(Event event)
{
    if (event == Event::ProcessEnds)
        return m_state.exchange(State::OutOfUse) != State::OutOfUse;
    for (const Transition& transition : transitions) {
        State expected = transition.from;
        if (transition.event == event && m_state.compare_exchange_strong(expected, transition.to))
            return true;
    }
    return false;
}
