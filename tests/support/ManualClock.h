// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_MANUALCLOCK_H
#define VIGIL_SUPPORT_MANUALCLOCK_H

#include <QPointer>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "agent/core/Clock.h"

namespace support {

/// A clock under the test's control: time passes only in advance().
class ManualClock : public agent::Clock
{
public:
    /// Timers fire earlyMs before their time, as those of a system may do, or after it if it is negative.
    explicit ManualClock(qint64 earlyMs = 0) : m_earlyMs(earlyMs) {}

    qint64 elapsedMs() const override { return m_elapsedMs; }
    QDateTime nowUtc() const override { return m_hostTime.addMSecs(m_elapsedMs); }

    size_t pendingCalls() const { return m_calls.size(); }

    /// Without the cancelled ones.
    size_t liveCalls() const
    {
        return static_cast<size_t>(std::count_if(m_calls.begin(), m_calls.end(),
                                                 [](const auto& call) { return call.second.context; }));
    }

    /// Makes each call that becomes due, at its own time.
    void advance(qint64 ms)
    {
        const qint64 end = m_elapsedMs + ms;
        while (!m_calls.empty() && m_calls.begin()->first <= end) {
            const auto due = m_calls.begin();
            m_elapsedMs = std::max(m_elapsedMs, due->first);
            const Call call = std::move(due->second);
            m_calls.erase(due);
            if (call.context)
                call.run();
        }
        m_elapsedMs = end;
    }

    /// Time passes in one step, as on a machine that is too busy to run timers. All calls that became due are
    /// late.
    void jump(qint64 ms)
    {
        m_elapsedMs += ms;
        advance(0);
    }

    /// As an operator or a time server may do.
    void setBack(qint64 ms) { m_hostTime = m_hostTime.addMSecs(-ms); }

protected:
    void wait(qint64 delayMs, QObject* context, std::function<void()> call) override
    {
        const qint64 firesAfter = delayMs > m_earlyMs ? delayMs - m_earlyMs : delayMs;
        m_calls.emplace(m_elapsedMs + firesAfter, Call{context, std::move(call)});
    }

private:
    struct Call
    {
        QPointer<QObject> context;
        std::function<void()> run;
    };

    QDateTime m_hostTime = QDateTime(QDate(2026, 1, 31), QTime(12, 34, 56), Qt::UTC);
    const qint64 m_earlyMs;
    qint64 m_elapsedMs = 0;
    std::multimap<qint64, Call> m_calls;
};

} // namespace support

#endif
