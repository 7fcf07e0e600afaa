// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/Identity.h"

#include <QStringList>

namespace agent {

Identity identityOf(std::intptr_t socket)
{
    const platform::Peer peer = platform::peerOf(socket);
    const platform::Process process = platform::processOf(peer);
    return {peer.user, process.id, QString::fromStdString(process.name)};
}

QString identityText(const Identity& identity)
{
    QStringList parts;
    if (!identity.program.isEmpty())
        parts.append(identity.program);
    parts.append(userText(identity.user));
    if (identity.process != 0)
        parts.append(QStringLiteral("pid %1").arg(identity.process));
    return parts.join(QStringLiteral(", "));
}

} // namespace agent
