// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_NETSNMP_AGENTXFACTS_H
#define VIGIL_AGENT_NETSNMP_AGENTXFACTS_H

/// From RFC 2741, which no installed header of Net-SNMP has.
namespace agent::agentx {

constexpr char version = 1;

enum Command {
    Register = 3,
    Get = 5,
    GetNext = 6,
    TestSet = 8,
    CommitSet = 9,
    UndoSet = 10,
    CleanupSet = 11,
    Ping = 13,
    Response = 18,
};

// The header of a message: its size, and where its fields are.
constexpr int headerSize = 20;
constexpr int versionAt = 0;
constexpr int commandAt = 1;
constexpr int flagsAt = 2;
constexpr int transactionAt = 8;
constexpr int lengthAt = 16;

} // namespace agent::agentx

#endif
