// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/peer/SocketLookup.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace platform {

namespace {

struct Request
{
    nlmsghdr header;
    inet_diag_req_v2 body;
};

Request requestFor(const Endpoint& local, const Endpoint& remote)
{
    Request request = {};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    request.header.nlmsg_flags = NLM_F_REQUEST;
    request.body.sdiag_family = local.isIPv6 ? AF_INET6 : AF_INET;
    request.body.sdiag_protocol = IPPROTO_TCP;
    request.body.idiag_states = ~0U;
    request.body.id.idiag_sport = local.port;
    request.body.id.idiag_dport = remote.port;
    std::copy(local.address.begin(), local.address.end(), request.body.id.idiag_src);
    std::copy(remote.address.begin(), remote.address.end(), request.body.id.idiag_dst);
    request.body.id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    request.body.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    return request;
}

Answer answerIn(const char* bytes, std::size_t size, const Endpoint& local, const Endpoint& remote)
{
    nlmsghdr header;
    if (size < sizeof header)
        return {};
    std::memcpy(&header, bytes, sizeof header);
    if (header.nlmsg_type == NLMSG_ERROR && size >= NLMSG_LENGTH(sizeof(nlmsgerr))) {
        nlmsgerr error;
        std::memcpy(&error, bytes + NLMSG_HDRLEN, sizeof error);
        return {error.error == -ENOENT, std::nullopt};
    }
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY || size < NLMSG_LENGTH(sizeof(inet_diag_msg)))
        return {};
    inet_diag_msg found;
    std::memcpy(&found, bytes + NLMSG_HDRLEN, sizeof found);
    // The kernel names the listening socket where there is no connection.
    const bool isWanted = found.id.idiag_sport == local.port && found.id.idiag_dport == remote.port &&
                          (found.idiag_state == TCP_LISTEN) == (remote.port == 0);
    if (!isWanted)
        return {true, std::nullopt};
    return {true, FoundSocket{found.idiag_uid, found.idiag_inode, found.idiag_state}};
}

Answer ask(int netlink, const Endpoint& local, const Endpoint& remote)
{
    const Request request = requestFor(local, remote);
    if (send(netlink, &request, sizeof request, MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof request))
        return {};
    // The kernel has answered before send() returns.
    char reply[8192];
    sockaddr_nl sender = {};
    socklen_t senderSize = sizeof sender;
    const ssize_t size = recvfrom(netlink, reply, sizeof reply, MSG_DONTWAIT,
                                  reinterpret_cast<sockaddr*>(&sender), &senderSize);
    const bool isOfTheKernel = senderSize == sizeof sender && sender.nl_pid == 0;
    return size > 0 && isOfTheKernel ? answerIn(reply, static_cast<std::size_t>(size), local, remote)
                                     : Answer();
}

} // namespace

Answer lookUpByNetlink(const Endpoint& local, const Endpoint& remote)
{
    const int netlink = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (netlink < 0)
        return {};
    Answer answer = ask(netlink, local, remote);
    close(netlink);
    return answer;
}

} // namespace platform
