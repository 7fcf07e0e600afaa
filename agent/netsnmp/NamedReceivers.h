// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_NAMEDRECEIVERS_H
#define VIGIL_AGENT_NETSNMP_NAMEDRECEIVERS_H

#include <QByteArray>

#include <memory>
#include <vector>

#include "agent/core/Clock.h"
#include "agent/netsnmp/HostLookup.h"

namespace agent {

/// Takes over the configuration's lines about notification receivers. A receiver given by a host's name is
/// added once HostLookup has found its address; Net-SNMP would wait for the name server, and try only once.
///
/// Ownership: Net-SNMP's state is global, so one object per process. The clock must outlive it.
class NamedReceivers
{
public:
    explicit NamedReceivers(Clock& clock) : m_clock(clock) {}
    ~NamedReceivers();
    NamedReceivers(const NamedReceivers&) = delete;
    NamedReceivers& operator=(const NamedReceivers&) = delete;

    /// Net-SNMP's agent must be initialised, and its configuration yet to be read.
    void takeOver();

private:
    static void handleLine(const char* directive, char* line);
    static void forgetAll();
    void add(const QByteArray& directive, const QByteArray& line);

    Clock& m_clock;
    std::vector<std::unique_ptr<HostLookup>> m_lookups; // of the present configuration
};

} // namespace agent

#endif
