// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/Peer.h"

// Windows knows the process of each connection, but nothing asks it yet: all users are unknown.
namespace platform {

Peer peerOf(std::intptr_t)
{
    return {};
}

User localPeerUser(std::intptr_t)
{
    return std::nullopt;
}

Process processOf(const Peer&)
{
    return {};
}

User userNamed(const std::string&)
{
    return std::nullopt;
}

User ownUser()
{
    return std::nullopt;
}

} // namespace platform
