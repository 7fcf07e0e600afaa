// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/Peer.h"

#include <array>
#include <cctype>
#include <cstring>
#include <memory>
#include <vector>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <iphlpapi.h>
#include <sddl.h>
#include <tlhelp32.h>

// The system's table of TCP connections names the process of each, and its token names the user.
namespace platform {

namespace {

constexpr const char* localSystem = "S-1-5-18";
constexpr int tableAttempts = 5;
constexpr std::size_t firstWords = 4096; // about 600 connections

struct CloseObject
{
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

using Object = std::unique_ptr<void, CloseObject>;

struct LocalMemory
{
    void operator()(void* memory) const { LocalFree(memory); }
};

// --- The connection

/// An IPv4 address is kept in its IPv6 form.
struct Endpoint
{
    std::array<std::uint8_t, 16> address = {};
    std::uint16_t port = 0; ///< in network byte order

    bool operator==(const Endpoint& other) const { return address == other.address && port == other.port; }
};

struct Connection
{
    Endpoint local;
    Endpoint remote;   ///< of a listening socket it means nothing
    DWORD process = 0; ///< 0: none has accepted it, or all have closed it
};

Endpoint endpointOf(DWORD address, DWORD port)
{
    Endpoint endpoint;
    endpoint.address[10] = endpoint.address[11] = 0xff;
    std::memcpy(&endpoint.address[12], &address, sizeof address);
    endpoint.port = static_cast<std::uint16_t>(port);
    return endpoint;
}

Endpoint endpointOf(const void* address, DWORD port)
{
    Endpoint endpoint;
    std::memcpy(endpoint.address.data(), address, endpoint.address.size());
    endpoint.port = static_cast<std::uint16_t>(port);
    return endpoint;
}

std::optional<Endpoint> endpointOf(std::intptr_t socket, decltype(getsockname)* getName)
{
    sockaddr_storage address = {};
    int size = sizeof address;
    if (getName(static_cast<SOCKET>(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return std::nullopt;
    if (address.ss_family == AF_INET6) {
        const auto& ip = reinterpret_cast<const sockaddr_in6&>(address);
        return endpointOf(&ip.sin6_addr, ip.sin6_port);
    }
    const auto& ip = reinterpret_cast<const sockaddr_in&>(address);
    return address.ss_family == AF_INET ? std::optional(endpointOf(ip.sin_addr.s_addr, ip.sin_port))
                                        : std::nullopt;
}

/// Empty if the system does not answer.
std::vector<DWORD> tableOf(int family, TCP_TABLE_CLASS kind)
{
    std::vector<DWORD> table(firstWords);
    for (int attempt = 0; attempt < tableAttempts; ++attempt) {
        auto size = static_cast<DWORD>(table.size() * sizeof(DWORD));
        const DWORD result =
            GetExtendedTcpTable(table.data(), &size, FALSE, static_cast<ULONG>(family), kind, 0);
        if (result == NO_ERROR)
            return table;
        if (result != ERROR_INSUFFICIENT_BUFFER)
            return {};
        table.resize(size / sizeof(DWORD) + firstWords); // it may grow until the next attempt
    }
    return {};
}

Connection connectionOf(const MIB_TCPROW_OWNER_PID& row)
{
    return {endpointOf(row.dwLocalAddr, row.dwLocalPort), endpointOf(row.dwRemoteAddr, row.dwRemotePort),
            row.dwOwningPid};
}

Connection connectionOf(const MIB_TCP6ROW_OWNER_PID& row)
{
    return {endpointOf(row.ucLocalAddr, row.dwLocalPort), endpointOf(row.ucRemoteAddr, row.dwRemotePort),
            row.dwOwningPid};
}

/// The first suitable one.
template <typename Table, typename Suits>
std::optional<Connection> findIn(const std::vector<DWORD>& words, const Suits& suits)
{
    if (words.empty())
        return std::nullopt;
    const auto& table = reinterpret_cast<const Table&>(*words.data());
    for (DWORD row = 0; row < table.dwNumEntries; ++row) {
        if (const Connection connection = connectionOf(table.table[row]); suits(connection))
            return connection;
    }
    return std::nullopt;
}

/// The system keeps IPv4 and IPv6 apart. A socket for both may be in either table.
template <typename Suits>
std::optional<Connection> find(TCP_TABLE_CLASS kind, const Suits& suits)
{
    const auto found = findIn<MIB_TCPTABLE_OWNER_PID>(tableOf(AF_INET, kind), suits);
    return found ? found : findIn<MIB_TCP6TABLE_OWNER_PID>(tableOf(AF_INET6, kind), suits);
}

bool isWildcard(const Endpoint& endpoint)
{
    return endpoint == endpointOf(DWORD(0), endpoint.port) ||
           endpoint == endpointOf(&in6addr_any, endpoint.port);
}

DWORD processListeningAt(const Endpoint& local)
{
    auto found = find(TCP_TABLE_OWNER_PID_LISTENER,
                      [&](const Connection& listener) { return listener.local == local; });
    if (!found)
        found = find(TCP_TABLE_OWNER_PID_LISTENER, [&](const Connection& listener) {
            return listener.local.port == local.port && isWildcard(listener.local);
        });
    return found ? found->process : 0;
}

/// The process with this end of the connection. Before it has accepted the connection: the listening one.
DWORD processAt(const Endpoint& local, const Endpoint& remote)
{
    const auto found = find(TCP_TABLE_OWNER_PID_CONNECTIONS, [&](const Connection& connection) {
        return connection.local == local && connection.remote == remote;
    });
    if (!found)
        return 0;
    return found->process != 0 ? found->process : processListeningAt(local);
}

// --- The user

User textOf(PSID sid)
{
    char* text = nullptr;
    if (!ConvertSidToStringSidA(sid, &text))
        return std::nullopt;
    const std::unique_ptr<char, LocalMemory> memory(text);
    return std::string(text);
}

User userOf(HANDLE process)
{
    HANDLE opened = nullptr;
    if (!process || !OpenProcessToken(process, TOKEN_QUERY, &opened))
        return std::nullopt;
    const Object token(opened);
    alignas(TOKEN_USER) std::array<char, sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE> user = {};
    DWORD size = 0;
    if (!GetTokenInformation(opened, TokenUser, user.data(), static_cast<DWORD>(user.size()), &size))
        return std::nullopt;
    return textOf(reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
}

std::wstring wideText(const std::string& text)
{
    std::wstring wide(text.size(), L'\0');
    const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                         static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(size));
    return wide;
}

User accountNamed(const std::string& name)
{
    alignas(SID) std::array<char, SECURITY_MAX_SID_SIZE> sid = {};
    std::array<wchar_t, 256> domain = {};
    auto sidSize = static_cast<DWORD>(sid.size());
    auto domainSize = static_cast<DWORD>(domain.size());
    SID_NAME_USE use = SidTypeUnknown;
    if (!LookupAccountNameW(nullptr, wideText(name).c_str(), sid.data(), &sidSize, domain.data(), &domainSize,
                            &use))
        return std::nullopt;
    const bool isUser = use == SidTypeUser || use == SidTypeWellKnownGroup; // the system's own accounts
    return isUser ? textOf(sid.data()) : std::nullopt;
}

// --- The process

/// Only what the agent may show in a message.
std::string plainName(const wchar_t* name)
{
    std::string plain;
    for (; *name; ++name) {
        const bool isPlain = *name < 128 && (std::isalnum(static_cast<unsigned char>(*name)) != 0 ||
                                             std::strchr("._+:@/-", static_cast<char>(*name)));
        plain += isPlain ? static_cast<char>(*name) : '?';
    }
    return plain;
}

} // namespace

User rootUser()
{
    return localSystem;
}

Peer peerOf(std::intptr_t socket)
{
    const std::optional<Endpoint> here = endpointOf(socket, getsockname);
    const std::optional<Endpoint> there = endpointOf(socket, getpeername);
    if (!here || !there)
        return {};
    const DWORD process = processAt(*there, *here);
    if (process == 0)
        return {};
    const Object opened(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    // Another process may have got the number before it was open.
    if (processAt(*there, *here) != process)
        return {};
    return {userOf(opened.get()), process};
}

User localPeerUser(std::intptr_t)
{
    return std::nullopt;
}

bool mayLibraryAskForPeers()
{
    return false;
}

bool knowsLocalPeers()
{
    return false;
}

Process processOf(const Peer& peer)
{
    if (peer.key == 0)
        return {};
    Process process = {static_cast<std::uint32_t>(peer.key), {}};
    const Object processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL isThere = Process32FirstW(processes.get(), &entry); isThere;
         isThere = Process32NextW(processes.get(), &entry)) {
        if (entry.th32ProcessID == process.id)
            process.name = plainName(entry.szExeFile);
    }
    return process;
}

bool isUserId(const std::string& text)
{
    PSID sid = nullptr;
    if (text.compare(0, 4, "S-1-") != 0 || !ConvertStringSidToSidA(text.c_str(), &sid))
        return false;
    const std::unique_ptr<void, LocalMemory> memory(sid);
    return textOf(sid) == text; // some other texts are accepted, too
}

User userNamed(const std::string& nameOrId)
{
    if (isUserId(nameOrId))
        return nameOrId;
    return nameOrId.empty() ? std::nullopt : accountNamed(nameOrId);
}

User ownUser()
{
    return userOf(GetCurrentProcess());
}

} // namespace platform
