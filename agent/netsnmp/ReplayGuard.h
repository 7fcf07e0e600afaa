// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_REPLAYGUARD_H
#define VIGIL_AGENT_NETSNMP_REPLAYGUARD_H

#include <QByteArray>

#include <deque>
#include <set>
#include <utility>

#include "agent/core/Clock.h"
#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Drops copies of SETs that came over SNMPv3.
///
/// SNMPv3 proves who sent a message, but it accepts the same message again for 150 seconds before and after
/// the time in it. The guard remembers each authenticated SET for both. A manager that repeats a SET gives it
/// another number. There is no reply to a copy: the manager has had one.
///
/// Ownership: the clock must outlive the guard.
/// Failure: at more than 60 SETs a second the oldest are forgotten early.
class ReplayGuard
{
public:
    explicit ReplayGuard(Clock& clock) : m_clock(clock) {}

    /// Call start() once Net-SNMP has its access control, and stop() before it shuts down.
    void start();
    void stop();

private:
    static int check(int, int, void* view, void* self);
    bool isCopy(const netsnmp_pdu& pdu);
    void forgetOld();
    void warn(const netsnmp_pdu& pdu);

    Clock& m_clock;
    std::set<QByteArray> m_seen;                                                 // fingerprints
    std::deque<std::pair<qint64, std::set<QByteArray>::const_iterator>> m_order; // with their times
    qint64 m_nextWarningMs = 0;
};

} // namespace agent

#endif
