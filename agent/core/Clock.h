// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_CLOCK_H
#define VIGIL_AGENT_CORE_CLOCK_H

#include <QDateTime>
#include <QObject>

#include <functional>

namespace agent {

/// Time, as far as the agent depends on it: how long something has lasted, what the operator's clock says,
/// and when to look again.
///
/// Purpose: tests put a clock of their own in its place, so that none of them waits for a day or for ten
/// seconds.
///
/// Threads: the agent has one. Ownership: the clock must outlive whoever uses it.
/// Failure: none. A change of the host's time moves nowUtc() alone, never what is measured or awaited.
class Clock
{
public:
    virtual ~Clock() = default;

    /// Milliseconds since some moment in the past; never goes backwards.
    virtual qint64 elapsedMs() const = 0;

    virtual QDateTime nowUtc() const = 0;

    /// Makes the call from the event loop in delayMs milliseconds (0: as soon as the loop runs), and not at
    /// all if context is destroyed before.
    virtual void callAfter(qint64 delayMs, QObject* context, std::function<void()> call) = 0;
};

} // namespace agent

#endif
