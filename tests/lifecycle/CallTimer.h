// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_LIFECYCLE_CALLTIMER_H
#define VIGIL_TESTS_LIFECYCLE_CALLTIMER_H

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

/// Keeps the longest time of each kind of call, by the steady clock.
///
/// The load of the machine does not count: the waits of the process's threads for a processor are taken off,
/// since the thread of a call may wait for a lock of another one. Linux only.
class CallTimer
{
public:
    template <typename Call>
    auto time(const std::string& name, Call call)
    {
        const Watch watch{m_longestMs[name]};
        return call();
    }

    /// In milliseconds, by name.
    const std::map<std::string, long>& longest() const { return m_longestMs; }

private:
    using Clock = std::chrono::steady_clock;
    using Waits = std::map<std::string, long long>; // in nanoseconds, by thread

    struct Watch
    {
        long& longestMs;
        const Waits waitsBefore = waits();
        const Clock::time_point start = Clock::now();

        ~Watch()
        {
            std::chrono::nanoseconds taken = Clock::now() - start;
            for (const auto& [thread, wait] : waits()) {
                const auto before = waitsBefore.find(thread);
                taken -= std::chrono::nanoseconds(wait - (before == waitsBefore.end() ? 0 : before->second));
            }
            const long ms = std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
            longestMs = ms > longestMs ? ms : longestMs;
        }
    };

    static Waits waits()
    {
        Waits waits;
        std::error_code ended; // a thread may end meanwhile
        for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", ended)) {
            long long computed = 0;
            long long waited = 0;
            if (std::ifstream(thread.path() / "schedstat") >> computed >> waited)
                waits[thread.path().string()] = waited;
        }
        return waits;
    }

    std::map<std::string, long> m_longestMs;
};

#endif
