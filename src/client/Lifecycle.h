// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_CLIENT_LIFECYCLE_H
#define VIGIL_CLIENT_LIFECYCLE_H

#include <atomic>

/// The states of the library and the events that change them.
///
///     state     | event         | next state
///     ----------|---------------|-----------
///     Stopped   | Init          | Starting
///     Starting  | NoThread      | Stopped
///     Starting  | Started       | Running
///     Running   | Stop          | Stopping
///     Stopping  | ThreadsEnded  | Stopped
///     Stopping  | ThreadLost    | OutOfUse
///     any       | ProcessEnds   | OutOfUse
///
/// All other events are ignored: a second init(), cleanup() without init(), the end of a stop after
/// ProcessEnds.
///
/// Threads: any. Only one thread at a time starts or stops the library.
class Lifecycle
{
public:
    enum class State {
        Stopped,  ///< no threads, no tables, no callbacks
        Starting, ///< the runner's thread starts
        Running,  ///< values and registrations are accepted
        Stopping, ///< the threads end
        OutOfUse  ///< for the rest of the process: it is ending, or a thread could not be stopped
    };

    enum class Event {
        Init,         ///< the first health check, or the application, calls init()
        NoThread,     ///< no thread, descriptor or memory is left
        Started,      ///< the client thread is ready to run
        Stop,         ///< cleanup(), by the last health check or the exit handler
        ThreadsEnded, ///< both threads have ended
        ThreadLost,   ///< a thread does not end in time; or it is gone, as in a forked child
        ProcessEnds   ///< the exit handler has stopped the library
    };

    State state() const { return m_state; }

    /// False if the event is ignored.
    bool on(Event event);

private:
    std::atomic<State> m_state{State::Stopped};
};

#endif
