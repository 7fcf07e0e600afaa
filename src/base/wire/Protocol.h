// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_PROTOCOL_H
#define VIGIL_BASE_WIRE_PROTOCOL_H

#include <QtGlobal>

// The facts on which the library and the local SNMP service must agree. FrameHeader has the layout of a
// frame, the record classes that of their payloads; docs/wire-protocol.md explains both.

namespace base {

/// Where the service listens and the library connects, unless the operator says otherwise.
constexpr const char* defaultServiceHost = "127.0.0.1";
constexpr quint16 defaultServicePort = 43125;

/// The enterprise's subtree. Identifiers travel relative to it.
constexpr const char* enterpriseOid = "1.3.6.1.4.1.32473";

/// The subtrees of VIGIL-MIB and VIGIL-AGENT-MIB, relative to the enterprise's.
constexpr const char* vigilMibOid = "127.3.1.200.4";
constexpr const char* vigilAgentMibOid = "127.3.1.200.5";

/// The number in a frame's header that tells which record the payload holds.
enum DataType : int {
    SnmpIntType = 0,
    SnmpStringType = 1,
    SnmpIntResponseType = 2,
    SnmpStringResponseType = 3
};

/// What a frame's callback id asks for.
enum CallbackId : int {
    PlainValue = 0,     ///< to the service: a value; from the service: a value that a manager has set
    ValueAndNotify = 1, ///< to the service: a value, and a notification about it
    Validation = 2      ///< from the service: may a manager set this value?; to the service: the verdict
};

} // namespace base

#endif
