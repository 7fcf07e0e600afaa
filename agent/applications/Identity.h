// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_IDENTITY_H
#define VIGIL_AGENT_APPLICATIONS_IDENTITY_H

#include <QString>

#include <cstdint>
#include <functional>

#include "agent/core/User.h"

namespace agent {

/// Who is at the other end of a connection. The user decides about rights; process and program only help the
/// operator, and are often not known.
struct Identity
{
    User user = {};
    quint32 process = 0;  ///< 0: not known
    QString program = {}; ///< as the process calls itself; empty: not known
};

/// Finds it for a connected socket. Tests have their own.
using Identify = std::function<Identity(std::intptr_t socket)>;

/// Asks the system.
Identity identityOf(std::intptr_t socket);

/// For example "shop-server, uid 1001, pid 4711".
QString identityText(const Identity& identity);

} // namespace agent

#endif
