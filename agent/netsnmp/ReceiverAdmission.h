// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_RECEIVERADMISSION_H
#define VIGIL_AGENT_NETSNMP_RECEIVERADMISSION_H

#include <vector>

#include "agent/netsnmp/NetSnmp.h"

namespace agent {

/// Lives while Net-SNMP reads the configuration, and keeps out receivers of notifications that could hold the
/// agent up.
///
/// Purpose: before Net-SNMP sends an inform over SNMPv3, it asks the receiver for its engine id, and waits
/// for the answer, seconds for each inform when nobody answers. So such a receiver needs its id in the
/// configuration.
///
/// Threads: the agent has one. Ownership: the sessions belong to Net-SNMP. One object at a time.
/// Failure: a receiver that is kept out is named in the log; the others remain.
class ReceiverAdmission
{
public:
    ReceiverAdmission();

    /// Lets the receivers in.
    ~ReceiverAdmission();

    ReceiverAdmission(const ReceiverAdmission&) = delete;
    ReceiverAdmission& operator=(const ReceiverAdmission&) = delete;

private:
    struct Receiver
    {
        netsnmp_session* session;
        bool wantsInforms;
    };

    static int collect(int major, int minor, void* arguments, void* self);
    static void admit(const Receiver& receiver);

    std::vector<Receiver> m_receivers;
};

} // namespace agent

#endif
