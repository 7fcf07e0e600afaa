// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/Sockets.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstdlib>
#include <system_error>

namespace vigil::test::sockets {

namespace {

constexpr int backlog = 50;

void check(int result, const char* what)
{
    if (result != 0)
        throw std::system_error(WSAGetLastError(), std::system_category(), what);
}

SOCKET descriptor(const Socket& socket)
{
    return static_cast<SOCKET>(socket.handle());
}

void prepare(SOCKET socket)
{
    u_long on = 1;
    check(ioctlsocket(socket, static_cast<long>(FIONBIO), &on), "ioctlsocket");
    SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
}

Socket make(int type)
{
    WSADATA data;
    check(WSAStartup(MAKEWORD(2, 2), &data), "WSAStartup"); // counts; the end of the process undoes it
    const SOCKET handle = ::socket(AF_INET, type, 0);
    check(handle == INVALID_SOCKET ? -1 : 0, "socket");
    Socket result(static_cast<Handle>(handle));
    prepare(handle);
    return result;
}

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void bindTo(const Socket& socket, std::uint16_t port)
{
    const sockaddr_in address = loopback(port);
    check(bind(descriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
}

Outcome outcomeOf(int result, std::size_t& size)
{
    size = result > 0 ? static_cast<std::size_t>(result) : 0;
    if (result >= 0)
        return Outcome::Done;
    return WSAGetLastError() == WSAEWOULDBLOCK ? Outcome::Later : Outcome::Ended;
}

} // namespace

void close(Handle handle)
{
    closesocket(static_cast<SOCKET>(handle));
}

// Without any option no other process may bind the port.
Socket reserve(std::uint16_t port)
{
    Socket socket = make(SOCK_STREAM);
    bindTo(socket, port);
    return socket;
}

Socket listenOn(std::uint16_t port)
{
    Socket socket = reserve(port);
    check(listen(descriptor(socket), backlog), "listen");
    return socket;
}

Socket acceptFrom(const Socket& server)
{
    const SOCKET handle = accept(descriptor(server), nullptr, nullptr);
    if (handle == INVALID_SOCKET)
        return Socket();
    Socket socket(static_cast<Handle>(handle));
    prepare(handle);
    return socket;
}

Socket makeLoop()
{
    Socket socket = make(SOCK_DGRAM);
    bindTo(socket, 0);
    const sockaddr_in address = loopback(portOf(socket));
    check(connect(descriptor(socket), reinterpret_cast<const sockaddr*>(&address), sizeof address),
          "connect");
    return socket;
}

std::uint16_t portOf(const Socket& socket)
{
    sockaddr_in address = {};
    int size = sizeof address;
    check(getsockname(descriptor(socket), reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    return ntohs(address.sin_port);
}

Outcome read(const Socket& socket, char* buffer, std::size_t& size)
{
    const Outcome outcome = outcomeOf(recv(descriptor(socket), buffer, static_cast<int>(size), 0), size);
    return outcome == Outcome::Done && size == 0 ? Outcome::Ended : outcome;
}

Outcome write(const Socket& socket, const char* bytes, std::size_t& size)
{
    return outcomeOf(send(descriptor(socket), bytes, static_cast<int>(size), 0), size);
}

void wait(std::vector<Interest>& interests, int milliseconds)
{
    std::vector<WSAPOLLFD> events;
    for (const Interest& interest : interests) {
        const int wanted =
            (interest.isForReading ? POLLRDNORM : 0) | (interest.isForWriting ? POLLWRNORM : 0);
        // An invalid descriptor is skipped. WSAPoll() would report a hang-up too early.
        events.push_back({wanted == 0 ? INVALID_SOCKET : static_cast<SOCKET>(interest.handle),
                          static_cast<SHORT>(wanted), 0});
    }
    if (WSAPoll(events.data(), static_cast<ULONG>(events.size()), milliseconds) < 0)
        events.assign(events.size(), WSAPOLLFD{INVALID_SOCKET, 0, 0});
    for (std::size_t i = 0; i < events.size(); ++i) {
        const bool isOver = (events[i].revents & (POLLHUP | POLLERR)) != 0;
        interests[i].isForReading =
            interests[i].isForReading && (isOver || (events[i].revents & POLLRDNORM) != 0);
        interests[i].isForWriting =
            interests[i].isForWriting && (isOver || (events[i].revents & POLLWRNORM) != 0);
    }
}

void setEnvironmentVariable(const char* name, const char* value)
{
    _putenv_s(name, value ? value : "");
}

} // namespace vigil::test::sockets
