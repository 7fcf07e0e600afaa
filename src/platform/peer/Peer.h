// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_PLATFORM_PEER_PEER_H
#define VIGIL_PLATFORM_PEER_PEER_H

#include <cstdint>
#include <optional>
#include <string>

/// Who is at the other end of a connection on this host. Each system has its own source file, chosen by the
/// build. All functions may be called from any thread; none throws.
namespace platform {

/// A user's number. Nothing: the system cannot tell.
using User = std::optional<std::uint32_t>;

constexpr std::uint32_t rootUser = 0;

/// The owner of a socket.
struct Peer
{
    User user;
    std::uint64_t socket = 0; ///< the system's number of the socket; 0 if the user is not known
};

/// The owner of the other end of a connected loopback socket. If no process has accepted the connection yet,
/// the owner of the listening socket: no other process can accept it.
///
/// The kernel answers, so the peer cannot lie. The user is the one who created the socket.
/// Failure: no user if the peer has closed the connection, or is in another network or user namespace. On
/// Windows there is never a user: the system knows the process, but nothing asks it yet.
Peer peerOf(std::intptr_t socket);

/// The user of the process at the other end of a connected local (Unix) socket, when it connected.
///
/// The kernel answers, so the peer cannot lie. Failure: no user outside of this user namespace, nor ever on
/// Windows.
User localPeerUser(std::intptr_t socket);

struct Process
{
    std::uint32_t id = 0; ///< 0: not known
    std::string name;     ///< chosen by the process; only letters, digits and "._+:@/-", others are "?"
};

/// The process that has the peer's socket open.
///
/// Failure: a program without privileges finds only processes of its own user. The search ends after 2000
/// open files, of root after 100 000.
Process processOf(const Peer& peer);

/// The user with this name or number. Nothing for a name that does not exist; a number need not have a name.
/// A host with its users in a directory service may ask that service, and wait for it.
User userNamed(const std::string& nameOrNumber);

/// The user whose rights this process has.
User ownUser();

} // namespace platform

#endif
