// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_DEFAULTSERVICEADDRESS_H
#define VIGIL_BASE_WIRE_DEFAULTSERVICEADDRESS_H

#include <QtGlobal>

namespace base {

/// Where the service listens and the library connects, unless the operator says otherwise.
constexpr const char* defaultServiceHost = "127.0.0.1";
constexpr quint16 defaultServicePort = 43125;

} // namespace base

#endif
