// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/Clock.h"

#include <algorithm>
#include <utility>

namespace agent {

void Clock::callAfter(qint64 delayMs, QObject* context, std::function<void()> call)
{
    callAt(elapsedMs() + delayMs, context, std::move(call));
}

void Clock::callAt(qint64 dueMs, QObject* context, std::function<void()> call)
{
    const qint64 delayMs = std::max(dueMs - elapsedMs(), qint64(0));
    wait(delayMs, context, [this, dueMs, context, call = std::move(call)] {
        if (elapsedMs() < dueMs)
            callAt(dueMs, context, call);
        else
            call();
    });
}

} // namespace agent
