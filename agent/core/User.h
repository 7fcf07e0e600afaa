// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_CORE_USER_H
#define VIGIL_AGENT_CORE_USER_H

#include <QString>

#include "platform/peer/Peer.h"

namespace agent {

/// The user an application runs as. Applications whose user the system cannot tell have one user together.
using User = platform::User;

/// As messages name a user: "uid 1001" or, on Windows, "user S-1-5-18".
inline QString userText(const User& user)
{
    if (!user)
        return QStringLiteral("unknown user");
    const QString id = QString::fromStdString(*user);
    return (id[0].isDigit() ? QStringLiteral("uid %1") : QStringLiteral("user %1")).arg(id);
}

/// True if an application of this user may change what one of owner has published.
inline bool mayChange(const User& user, const User& owner)
{
    return user == owner || user == platform::rootUser();
}

} // namespace agent

#endif
