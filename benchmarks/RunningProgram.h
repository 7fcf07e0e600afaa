// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_RUNNINGPROGRAM_H
#define VIGIL_BENCHMARKS_RUNNINGPROGRAM_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

/// A program that runs while the object lives, with a directory of its own.
///
/// Failure: exits with a message.
class RunningProgram
{
public:
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// The processor time it has used.
    double processorNanoseconds() const;

protected:
    RunningProgram();
    ~RunningProgram();

    /// Everything the program prints goes to the file "log" in its directory.
    void start(const std::vector<std::string>& arguments);

    const std::string& directory() const { return m_directory; }

    [[noreturn]] static void fail(const char* what);

private:
    std::string m_directory;
    pid_t m_process = 0;
};

/// A port of 127.0.0.1 that was just free. type is that of a socket.
std::uint16_t freePort(int type);

#endif
