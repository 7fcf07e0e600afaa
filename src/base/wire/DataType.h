// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DATATYPE_H
#define VIGIL_BASE_WIRE_DATATYPE_H

namespace base {

/// The number in a frame's header that says which record its payload holds.
enum DataType : int {
    SnmpIntType = 0,
    SnmpStringType = 1,
    SnmpIntResponseType = 2,
    SnmpStringResponseType = 3
};

/// What a frame's callback id asks for, in the direction of the arrow.
enum CallbackId : int {
    PlainValue = 0,    ///< to the service: a value; from the service: a value that the manager has set
    ValueWithTrap = 1, ///< to the service: a value, and a notification about it
    Validation = 2     ///< from the service: may the manager set this? and the answer to it
};

} // namespace base

#endif
