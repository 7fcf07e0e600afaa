// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_RUNNINGAGENT_H
#define VIGIL_BENCHMARKS_RUNNINGAGENT_H

#include <cstdint>
#include <string>

#include "benchmarks/RunningProgram.h"

/// A vigil-agent on free ports, while the object lives. The community "private" may write.
///
/// Failure: exits with a message.
class RunningAgent : public RunningProgram
{
public:
    /// Standalone.
    RunningAgent();

    /// Behind the snmpd with this AgentX socket.
    explicit RunningAgent(const std::string& agentxAddress);

    std::string snmpAddress() const { return "udp:127.0.0.1:" + std::to_string(m_snmpPort); }
    std::uint16_t applicationPort() const { return m_applicationPort; }

private:
    void startAs(std::vector<std::string> role);
    void waitUntilReady() const;

    std::uint16_t m_snmpPort;
    std::uint16_t m_applicationPort;
};

#endif
