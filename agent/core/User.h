// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_USER_H
#define VIGIL_AGENT_CORE_USER_H

#include <QString>

#include "platform/peer/Peer.h"

namespace agent {

/// The user an application runs as. Applications whose user the system cannot tell have one user together.
using User = platform::User;

/// As messages name a user.
inline QString userText(const User& user)
{
    return user ? QStringLiteral("uid %1").arg(*user) : QStringLiteral("unknown user");
}

/// True if an application of this user may change what one of owner has published.
inline bool mayChange(const User& user, const User& owner)
{
    return user == owner || user == platform::rootUser;
}

} // namespace agent

#endif
