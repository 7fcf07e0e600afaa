// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_PLATFORM_PEER_PEER_H
#define VIGIL_PLATFORM_PEER_PEER_H

#include <cstdint>
#include <optional>
#include <string>

/// Finds the user and process at the other end of a connection on this host. Each system has its own source
/// file, chosen by the build. All functions may be called from any thread; none throws.
namespace platform {

/// The system's own identifier of a user, as text: the number on Linux, such as "1001"; the security
/// identifier on Windows, such as "S-1-5-18". Nothing: the system cannot tell.
using User = std::optional<std::string>;

/// The user with all rights: root, on Windows Local System.
User rootUser();

/// The owner of a socket.
struct Peer
{
    User user;
    std::uint64_t key = 0; ///< for processOf(); 0: not known. The socket's number on Linux, else the process
};

/// The owner of the other end of a connected loopback socket. If no process has accepted the connection yet,
/// the owner of the listening socket: no other process can accept it.
///
/// The kernel answers, so the peer cannot lie. The user is the one who created the socket.
/// Failure: no user if the peer has closed the connection, or is in another network or user namespace. On
/// Windows no user if this process has no right to ask the other one.
Peer peerOf(std::intptr_t socket);

/// False if peerOf() or userNamed() may wait for the loader's lock, as they may on Windows. A thread that
/// unloads a library holds this lock while it waits for the library's threads, so these must not ask.
bool mayLibraryAskForPeers();

/// The user of the process at the other end of a connected local (Unix) socket, when it connected.
///
/// The kernel answers, so the peer cannot lie. Failure: no user outside of this user namespace, nor ever on
/// Windows.
User localPeerUser(std::intptr_t socket);

/// False if localPeerUser() never knows a user on this system.
bool knowsLocalPeers();

struct Process
{
    std::uint32_t id = 0; ///< 0: not known
    std::string name;     ///< chosen by the process; only letters, digits and "._+:@/-", others are "?"
};

/// The process with the peer's socket.
///
/// Failure: on Linux a program without privileges finds only processes of its own user. The search ends after
/// 2000 open files, of root after 100 000.
Process processOf(const Peer& peer);

/// True if the text can be the identifier of a user on this system.
bool isUserId(const std::string& text);

/// The user with this name or identifier. Nothing for a name that does not exist; an identifier need not have
/// a name. A host with its users in a directory service may ask that service, and wait for it.
User userNamed(const std::string& nameOrId);

/// The user whose rights this process has.
User ownUser();

} // namespace platform

#endif
