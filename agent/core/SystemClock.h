// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_SYSTEMCLOCK_H
#define VIGIL_AGENT_CORE_SYSTEMCLOCK_H

#include "agent/core/Clock.h"

namespace agent {

/// The clock and the timers of the running system. Time in suspend does not count.
class SystemClock : public Clock
{
public:
    SystemClock();

    qint64 elapsedMs() const override;
    QDateTime nowUtc() const override;

protected:
    void wait(qint64 delayMs, QObject* context, std::function<void()> call) override;

private:
    const qint64 m_startMs;
};

} // namespace agent

#endif
