// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/Sockets.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace vigil::test::sockets {

namespace {

constexpr int backlog = 50;

int descriptor(const Socket& socket)
{
    return static_cast<int>(socket.handle());
}

void check(int result, const char* what)
{
    if (result == -1)
        throw std::system_error(errno, std::generic_category(), what);
}

void prepare(int socket)
{
    check(fcntl(socket, F_SETFD, FD_CLOEXEC), "fcntl");
    check(fcntl(socket, F_SETFL, O_NONBLOCK), "fcntl");
}

Socket make(int type)
{
    const int handle = ::socket(AF_INET, type, 0);
    check(handle, "socket");
    Socket result(handle);
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

void setReusable(const Socket& socket, int isReusable)
{
    check(setsockopt(descriptor(socket), SOL_SOCKET, SO_REUSEADDR, &isReusable, sizeof isReusable),
          "setsockopt");
}

Socket bound(std::uint16_t port)
{
    Socket socket = make(SOCK_STREAM);
    setReusable(socket, 1); // connections that were closed still have the port
    bindTo(socket, port);
    return socket;
}

Outcome outcomeOf(ssize_t result, std::size_t& size)
{
    size = result > 0 ? static_cast<std::size_t>(result) : 0;
    if (result >= 0)
        return Outcome::Done;
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? Outcome::Later : Outcome::Ended;
}

} // namespace

void close(Handle handle)
{
    ::close(static_cast<int>(handle));
}

Socket reserve(std::uint16_t port)
{
    Socket socket = bound(port);
    setReusable(socket, 0); // else another process could bind the port, too, and listen
    return socket;
}

Socket listenOn(std::uint16_t port)
{
    Socket socket = bound(port);
    check(listen(descriptor(socket), backlog), "listen");
    return socket;
}

Socket acceptFrom(const Socket& server)
{
    const int handle = accept(descriptor(server), nullptr, nullptr);
    Socket socket(handle);
    if (socket.isOpen())
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
    socklen_t size = sizeof address;
    check(getsockname(descriptor(socket), reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    return ntohs(address.sin_port);
}

Outcome read(const Socket& socket, char* buffer, std::size_t& size)
{
    const Outcome outcome = outcomeOf(recv(descriptor(socket), buffer, size, 0), size);
    return outcome == Outcome::Done && size == 0 ? Outcome::Ended : outcome;
}

Outcome write(const Socket& socket, const char* bytes, std::size_t& size)
{
    return outcomeOf(send(descriptor(socket), bytes, size, MSG_NOSIGNAL), size);
}

void wait(std::vector<Interest>& interests, int milliseconds)
{
    std::vector<pollfd> events;
    for (const Interest& interest : interests) {
        const int wanted = (interest.isForReading ? POLLIN : 0) | (interest.isForWriting ? POLLOUT : 0);
        // A negative descriptor is skipped. poll() would report a hang-up before it is wanted.
        events.push_back(
            {wanted == 0 ? -1 : static_cast<int>(interest.handle), static_cast<short>(wanted), 0});
    }
    if (poll(events.data(), static_cast<nfds_t>(events.size()), milliseconds) < 0)
        events.assign(events.size(), pollfd{-1, 0, 0}); // a signal
    for (std::size_t i = 0; i < events.size(); ++i) {
        const bool isOver = (events[i].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0;
        interests[i].isForReading =
            interests[i].isForReading && (isOver || (events[i].revents & POLLIN) != 0);
        interests[i].isForWriting =
            interests[i].isForWriting && (isOver || (events[i].revents & POLLOUT) != 0);
    }
}

void setEnvironmentVariable(const char* name, const char* value)
{
    if (value)
        setenv(name, value, 1); // NOLINT(concurrency-mt-unsafe): see FakeService
    else
        unsetenv(name); // NOLINT(concurrency-mt-unsafe)
}

} // namespace vigil::test::sockets
