// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_CLOCKS_H
#define VIGIL_BENCHMARKS_CLOCKS_H

#include <ctime>

/// Nanoseconds of a clock: CLOCK_MONOTONIC, CLOCK_THREAD_CPUTIME_ID or CLOCK_PROCESS_CPUTIME_ID.
inline double nanoseconds(clockid_t clock)
{
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

/// Adds up the time between start() and stop().
class StopWatch
{
public:
    explicit StopWatch(clockid_t clock) : m_clock(clock) {}

    void start() { m_start = nanoseconds(m_clock); }
    void stop() { m_total += nanoseconds(m_clock) - m_start; }
    double total() const { return m_total; }

private:
    const clockid_t m_clock;
    double m_start = 0;
    double m_total = 0;
};

#endif
