// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_FRAMESINK_H
#define VIGIL_BENCHMARKS_FRAMESINK_H

#include <sys/types.h>

#include <cstdint>

/// The cheapest peer of the library: a process that accepts connections, one after the other, and counts the
/// frames. Its processor time is not part of this process's.
///
/// Ownership: the process ends with the object. Failure: exits with a message.
class FrameSink
{
public:
    FrameSink();
    ~FrameSink();
    FrameSink(const FrameSink&) = delete;
    FrameSink& operator=(const FrameSink&) = delete;

    std::uint16_t port() const { return m_port; }

    /// All frames so far.
    std::uint64_t frames() const;

    /// Returns once this many frames have arrived since the start. Sleeps meanwhile.
    void waitForFrames(std::uint64_t total);

    /// Closes the connection after the next bytes. The next one is accepted at once.
    void closeConnection();

    /// Returns once no frame has arrived for a while.
    void waitUntilQuiet() const;

    /// Frames a second of the newest connection, from its first bytes to its last ones.
    double framesPerSecond() const;

private:
    struct Shared;

    void run(int listener);
    void readConnection(int connection);

    Shared* m_shared;
    std::uint16_t m_port = 0;
    pid_t m_process = 0;
};

#endif
