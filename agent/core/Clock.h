// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_CLOCK_H
#define VIGIL_AGENT_CORE_CLOCK_H

#include <QDateTime>
#include <QObject>

#include <functional>

namespace agent {

/// The agent's only source of time. Tests use a clock they advance by hand.
///
/// Ownership: the clock must outlive its users.
/// A change of the host's time affects nowUtc() alone; delays are measured on elapsedMs().
class Clock
{
public:
    virtual ~Clock() = default;

    /// Milliseconds since an arbitrary moment. Never goes backwards.
    virtual qint64 elapsedMs() const = 0;

    virtual QDateTime nowUtc() const = 0;

    /// Makes the call from the event loop once delayMs milliseconds have passed, and never before
    /// (0: as soon as the loop runs). Destroying context cancels it.
    void callAfter(qint64 delayMs, QObject* context, std::function<void()> call);

    /// As callAfter(), once elapsedMs() has reached dueMs.
    void callAt(qint64 dueMs, QObject* context, std::function<void()> call);

protected:
    /// Makes the call from the event loop after at most delayMs. If the call comes early, callAt() waits
    /// again for the rest: system timers may be inexact, and may have an upper limit.
    virtual void wait(qint64 delayMs, QObject* context, std::function<void()> call) = 0;
};

} // namespace agent

#endif
