// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/Peer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/peer/SocketLookup.h"

namespace platform {

namespace {

// A user could make the search slow with many open files.
constexpr int maxFilesOfUser = 2000;
constexpr int maxFilesOfRoot = 100'000;
constexpr std::uint32_t noUser = 0xffff'ffff; // -1 to the system
constexpr std::uint32_t unmappedUser = 65'534;

// --- The socket

std::optional<Endpoint> toEndpoint(const sockaddr_storage& address)
{
    Endpoint endpoint;
    if (address.ss_family == AF_INET) {
        const auto& ip = reinterpret_cast<const sockaddr_in&>(address);
        endpoint.address[0] = ip.sin_addr.s_addr;
        endpoint.port = ip.sin_port;
        return endpoint;
    }
    if (address.ss_family != AF_INET6)
        return std::nullopt;
    const auto& ip = reinterpret_cast<const sockaddr_in6&>(address);
    endpoint.port = ip.sin6_port;
    std::memcpy(endpoint.address.data(), ip.sin6_addr.s6_addr, sizeof ip.sin6_addr.s6_addr);
    endpoint.isIPv6 = !IN6_IS_ADDR_V4MAPPED(&ip.sin6_addr);
    if (!endpoint.isIPv6)
        endpoint.address = {endpoint.address[3], 0, 0, 0};
    return endpoint;
}

std::optional<Endpoint> endpointOf(std::intptr_t socket, decltype(getsockname)* getName)
{
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    if (getName(static_cast<int>(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return std::nullopt;
    return toEndpoint(address);
}

std::optional<FoundSocket> find(const Endpoint& local, const Endpoint& remote)
{
    Answer answer = lookUpByNetlink(local, remote);
    // A kernel without the module for TCP has the same error as for a missing socket. This end exists.
    if (answer.isAnswered && !answer.socket && remote.port != 0 && !lookUpByNetlink(remote, local).socket)
        answer.isAnswered = false;
    return answer.isAnswered ? answer.socket : lookUpInProc(local, remote).socket;
}

bool isOwned(const std::optional<FoundSocket>& socket)
{
    return socket && socket->inode != 0;
}

/// A connection that the other end has closed also has no owner: the kernel still shows it, as root's.
bool isUnaccepted(const std::optional<FoundSocket>& socket)
{
    return socket && socket->inode == 0 &&
           (socket->state == TCP_ESTABLISHED || socket->state == TCP_SYN_RECV);
}

/// In a user namespace the kernel shows all users outside as one.
bool hasAllUsers()
{
    FILE* map = std::fopen("/proc/self/uid_map", "re");
    if (!map)
        return true;
    unsigned int first = 0;
    unsigned int outside = 0;
    unsigned int count = 0;
    const bool isRead = std::fscanf(map, "%u %u %u", &first, &outside, &count) == 3;
    std::fclose(map);
    return isRead && first == 0 && count == noUser;
}

/// False if the number may stand for any user outside of this namespace.
bool isKnown(std::uint32_t user)
{
    return user != noUser && (user != unmappedUser || hasAllUsers());
}

Peer ownerOf(const std::optional<FoundSocket>& socket)
{
    if (!isOwned(socket) || !isKnown(socket->user))
        return {};
    return {std::to_string(socket->user), socket->inode};
}

// --- The process

struct CloseDirectory
{
    void operator()(DIR* directory) const { closedir(directory); }
};

using Directory = std::unique_ptr<DIR, CloseDirectory>;

const dirent* nextIn(const Directory& directory)
{
    return readdir(directory.get()); // NOLINT(concurrency-mt-unsafe): no other thread has this directory open
}

bool isNumber(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Reduces what is left to search by the number of files it has seen.
bool hasOpen(const std::string& process, const std::string& file, int& left)
{
    const std::string folder = "/proc/" + process + "/fd";
    const Directory files(opendir(folder.c_str()));
    if (!files)
        return false;
    char target[64];
    while (const dirent* entry = nextIn(files)) {
        if (--left < 0)
            return false;
        const ssize_t size = readlinkat(dirfd(files.get()), entry->d_name, target, sizeof target);
        if (size > 0 && file.compare(0, std::string::npos, target, static_cast<std::size_t>(size)) == 0)
            return true;
    }
    return false;
}

bool isOf(const std::string& process, const User& user)
{
    struct stat info = {};
    return stat(("/proc/" + process).c_str(), &info) == 0 && std::to_string(info.st_uid) == user;
}

/// The name comes from the process: it must not look like a part of the message around it.
std::string nameOf(const std::string& process)
{
    FILE* file = std::fopen(("/proc/" + process + "/comm").c_str(), "re");
    if (!file)
        return {};
    char text[64];
    std::string name(text, std::fread(text, 1, sizeof text, file));
    std::fclose(file);
    if (!name.empty() && name.back() == '\n')
        name.pop_back();
    for (char& letter : name) {
        const bool isPlain = (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
                             (letter >= '0' && letter <= '9') || (letter && std::strchr("._+:@/-", letter));
        letter = isPlain ? letter : '?';
    }
    return name;
}

} // namespace

User rootUser()
{
    return "0";
}

Peer peerOf(std::intptr_t socket)
{
    const std::optional<Endpoint> here = endpointOf(socket, getsockname);
    const std::optional<Endpoint> there = endpointOf(socket, getpeername);
    if (!here || !there)
        return {};
    const std::optional<FoundSocket> before = find(*there, *here);
    if (!isUnaccepted(before))
        return ownerOf(before);
    Endpoint any;
    any.isIPv6 = there->isIPv6;
    const std::optional<FoundSocket> listener = find(*there, any);
    // If the connection is still waiting, this listener is the one it waits for: it cannot have changed.
    const std::optional<FoundSocket> after = find(*there, *here);
    return ownerOf(isUnaccepted(after) ? listener : after);
}

User localPeerUser(std::intptr_t socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
        size != sizeof peer)
        return std::nullopt;
    return isKnown(peer.uid) ? User(std::to_string(peer.uid)) : std::nullopt;
}

bool mayLibraryAskForPeers()
{
    return true;
}

bool knowsLocalPeers()
{
    return true;
}

Process processOf(const Peer& peer)
{
    if (!peer.user || peer.key == 0)
        return {};
    const Directory processes(opendir("/proc"));
    if (!processes)
        return {};
    const std::string socket = "socket:[" + std::to_string(peer.key) + "]";
    int left = peer.user == rootUser() ? maxFilesOfRoot : maxFilesOfUser;
    while (const dirent* entry = left > 0 ? nextIn(processes) : nullptr) {
        const std::string process = entry->d_name;
        if (isNumber(process) && isOf(process, peer.user) && hasOpen(process, socket, left))
            return {static_cast<std::uint32_t>(std::strtoul(process.c_str(), nullptr, 10)), nameOf(process)};
    }
    return {};
}

bool isUserId(const std::string& text)
{
    return isNumber(text) && std::strtoull(text.c_str(), nullptr, 10) < noUser;
}

User userNamed(const std::string& nameOrId)
{
    if (isNumber(nameOrId))
        return isUserId(nameOrId) ? User(std::to_string(std::strtoul(nameOrId.c_str(), nullptr, 10)))
                                  : std::nullopt;
    std::vector<char> buffer(16'384);
    passwd entry = {};
    passwd* found = nullptr;
    if (getpwnam_r(nameOrId.c_str(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return std::nullopt;
    return std::to_string(found->pw_uid);
}

User ownUser()
{
    return std::to_string(geteuid());
}

} // namespace platform
