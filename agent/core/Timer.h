// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_TIMER_H
#define VIGIL_AGENT_CORE_TIMER_H

#include <QObject>

#include <functional>
#include <memory>

#include "agent/core/Clock.h"

namespace agent {

/// Makes a call after a delay, or at intervals, on a Clock.
///
/// The call comes from the event loop and may start, stop or destroy its own timer.
/// Ownership: the clock must outlive the timer. Destroying the timer stops it.
class Timer
{
public:
    Timer(Clock& clock, std::function<void()> call);

    /// Makes one call, delayMs from now. Replaces what was started before.
    void startOnce(qint64 delayMs);

    /// Makes the first call intervalMs from now. If the event loop is late by several intervals, there is one
    /// call for all of them.
    void startRepeating(qint64 intervalMs);

    void stop();

    bool isActive() const { return m_pending != nullptr; }

private:
    void wait(qint64 delayMs, bool isRepeating);

    Clock& m_clock;
    const std::function<void()> m_call;
    std::unique_ptr<QObject> m_pending; // the context of the pending call
};

} // namespace agent

#endif
