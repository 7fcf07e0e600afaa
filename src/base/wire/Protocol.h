// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_PROTOCOL_H
#define VIGIL_BASE_WIRE_PROTOCOL_H

// The facts shared by the library and the local SNMP service. The default address is in
// DefaultServiceAddress.h, the layout of frames in FrameHeader.h, that of payloads in the record classes.

namespace base {

/// The enterprise's subtree. Identifiers travel relative to it.
constexpr const char* enterpriseOid = "1.3.6.1.4.1.32473";

/// The subtrees of VIGIL-MIB and VIGIL-AGENT-MIB, relative to the enterprise's.
constexpr const char* vigilMibOid = "127.3.1.200.4";
constexpr const char* vigilAgentMibOid = "127.3.1.200.5";

/// The record in a frame's payload, as its header names it.
enum DataType : int {
    SnmpIntType = 0,
    SnmpStringType = 1,
    SnmpIntResponseType = 2,
    SnmpStringResponseType = 3
};

/// Before each property of a record: its tag and its length in bytes.
constexpr int propertyHeaderSize = 8;

/// The purpose of a frame, as its callback id tells.
enum CallbackId : int {
    PlainValue = 0,     ///< to the service: a value; from the service: a value set by a manager
    ValueAndNotify = 1, ///< to the service: a value, and a notification about it
    Validation = 2      ///< from the service: may a manager set this value?; to the service: the verdict
};

} // namespace base

#endif
