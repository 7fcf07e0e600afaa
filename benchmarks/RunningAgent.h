// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_RUNNINGAGENT_H
#define VIGIL_BENCHMARKS_RUNNINGAGENT_H

#include <sys/types.h>

#include <cstdint>
#include <string>

/// A vigil-agent on free ports, while the object lives. The community "private" may write.
///
/// Failure: exits with a message.
class RunningAgent
{
public:
    RunningAgent();
    ~RunningAgent();
    RunningAgent(const RunningAgent&) = delete;
    RunningAgent& operator=(const RunningAgent&) = delete;

    std::string snmpAddress() const { return "udp:127.0.0.1:" + std::to_string(m_snmpPort); }
    std::uint16_t applicationPort() const { return m_applicationPort; }

    /// The processor time it has used.
    double processorNanoseconds() const;

private:
    void run();
    void waitUntilReady() const;

    std::string m_directory;
    std::uint16_t m_snmpPort;
    std::uint16_t m_applicationPort;
    pid_t m_process;
};

#endif
