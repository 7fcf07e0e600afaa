// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BENCHMARKS_RUNNINGSNMPD_H
#define VIGIL_BENCHMARKS_RUNNINGSNMPD_H

#include <cstdint>
#include <string>

#include "benchmarks/RunningProgram.h"

/// The system's snmpd on a free port, while the object lives. It is a master for subagents.
///
/// Failure: exits with a message.
class RunningSnmpd : public RunningProgram
{
public:
    /// directives are added to its configuration.
    explicit RunningSnmpd(const std::string& directives = {});

    std::string snmpAddress() const { return "udp:127.0.0.1:" + std::to_string(m_snmpPort); }
    std::string agentxAddress() const { return directory() + "/agentx"; }

private:
    void waitUntilReady() const;

    std::uint16_t m_snmpPort;
};

#endif
