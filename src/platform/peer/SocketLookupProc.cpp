// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/SocketLookup.h"

#include <cstdio>
#include <memory>
#include <string>

#include <arpa/inet.h>
#include <netinet/tcp.h>

namespace platform {

namespace {

struct CloseFile
{
    void operator()(FILE* file) const { std::fclose(file); }
};

using File = std::unique_ptr<FILE, CloseFile>;

/// An address and a port as the kernel prints them: words of the address as they lie in memory, in upper-case
/// hexadecimal digits.
std::string printed(const Endpoint& endpoint, bool inIPv6Table)
{
    std::array<std::uint32_t, 4> words = endpoint.address;
    if (inIPv6Table && !endpoint.isIPv6)
        words = {0, 0, htonl(0xffff), endpoint.address[0]}; // an IPv4 connection of an IPv6 socket
    std::string text;
    char digits[16];
    for (int word = 0; word < (inIPv6Table ? 4 : 1); ++word) {
        std::snprintf(digits, sizeof digits, "%08X", words[static_cast<std::size_t>(word)]);
        text += digits;
    }
    std::snprintf(digits, sizeof digits, ":%04X", static_cast<unsigned int>(ntohs(endpoint.port)));
    return text + digits;
}

/// Of two endpoints without an address, one is a wildcard.
bool isSameEnd(const std::string& wanted, const std::string& shown, bool isListener)
{
    if (wanted == shown)
        return true;
    const std::size_t colon = shown.find(':');
    const bool isWildcard = shown.find_first_not_of('0') == colon;
    return isListener && isWildcard && wanted.substr(wanted.find(':')) == shown.substr(colon);
}

Answer findIn(const char* table, bool isIPv6Table, const Endpoint& local, const Endpoint& remote)
{
    const File file(std::fopen(table, "re"));
    if (!file)
        return {};
    const bool isListener = remote.port == 0;
    const std::string wantedLocal = printed(local, isIPv6Table);
    const std::string wantedRemote = printed(remote, isIPv6Table);
    char line[512];
    while (std::fgets(line, sizeof line, file.get())) {
        char shownLocal[64];
        char shownRemote[64];
        unsigned int state = 0;
        unsigned int user = 0;
        unsigned int inode = 0;
        if (std::sscanf(line, "%*d: %63s %63s %X %*s %*s %*s %u %*d %u", shownLocal, shownRemote, &state,
                        &user, &inode) != 5)
            continue; // the heading
        if ((state == TCP_LISTEN) == isListener && isSameEnd(wantedLocal, shownLocal, isListener) &&
            (isListener || wantedRemote == shownRemote))
            return {true, FoundSocket{user, inode, static_cast<int>(state)}};
    }
    return {true, std::nullopt};
}

} // namespace

Answer lookUpInProc(const Endpoint& local, const Endpoint& remote)
{
    Answer answer;
    if (!local.isIPv6) {
        answer = findIn("/proc/net/tcp", false, local, remote);
        if (answer.socket)
            return answer;
    }
    const Answer other = findIn("/proc/net/tcp6", true, local, remote);
    return {answer.isAnswered || other.isAnswered, other.socket};
}

} // namespace platform
