// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_PLATFORM_PEER_SOCKETLOOKUP_H
#define VIGIL_PLATFORM_PEER_SOCKETLOOKUP_H

#include <array>
#include <cstdint>
#include <optional>

/// Linux: finds TCP sockets of this network namespace in the kernel's tables.
namespace platform {

/// A loopback address and a port, both in network byte order.
struct Endpoint
{
    bool isIPv6 = false;
    std::array<std::uint32_t, 4> address = {}; ///< of IPv4 the first element
    std::uint16_t port = 0;
};

struct FoundSocket
{
    std::uint32_t user;
    std::uint32_t inode; ///< 0: no process has it open, and user means nothing
    int state;           ///< as in <netinet/tcp.h>
};

/// isAnswered is false if the lookup does not work on this host, for example because a sandbox forbids it. It
/// is true if there is no such socket.
struct Answer
{
    bool isAnswered = false;
    std::optional<FoundSocket> socket;
};

/// The socket connected from local to remote. Without a port in remote: the one listening at local.
Answer lookUpByNetlink(const Endpoint& local, const Endpoint& remote);

/// The same from /proc/net/tcp and tcp6. Slower: it reads all sockets of the host.
Answer lookUpInProc(const Endpoint& local, const Endpoint& remote);

} // namespace platform

#endif
