// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_SOCKETS_H
#define VIGIL_TESTING_SOCKETS_H

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/// The system's sockets on 127.0.0.1, as far as FrameServer needs them: SocketsPosix.cpp, SocketsWindows.cpp.
///
/// Failure: functions that make a socket throw std::system_error.
namespace vigil::test::sockets {

using Handle = std::intptr_t;
constexpr Handle none = -1;

void close(Handle handle);

/// Owns a socket. Reading and writing never block.
class Socket
{
public:
    explicit Socket(Handle handle = none) : m_handle(handle) {}
    Socket(Socket&& other) noexcept : m_handle(std::exchange(other.m_handle, none)) {}
    Socket& operator=(Socket&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    ~Socket() { reset(); }

    Handle handle() const { return m_handle; }
    bool isOpen() const { return m_handle != none; }

    void reset()
    {
        if (isOpen())
            close(std::exchange(m_handle, none));
    }

private:
    Handle m_handle;
};

/// A TCP server. Port 0 stands for any free one.
Socket listenOn(std::uint16_t port);

/// A socket that holds the port without listening: connects are refused, and no other process gets the port.
Socket reserve(std::uint16_t port);

/// Not open if no connection waits.
Socket acceptFrom(const Socket& server);

/// A datagram socket connected to itself.
Socket makeLoop();

std::uint16_t portOf(const Socket& socket);

enum class Outcome {
    Done,
    Later, ///< nothing to read, or no room to write
    Ended
};

/// size is the room in buffer, and then the number of bytes read.
Outcome read(const Socket& socket, char* buffer, std::size_t& size);

/// size is the number of bytes, and then how many of them were written.
Outcome write(const Socket& socket, const char* bytes, std::size_t& size);

/// What to wait for, and then what has happened.
struct Interest
{
    Handle handle = none;
    bool isForReading = false;
    bool isForWriting = false;
};

/// Waits for one of the events, or until the time is over; -1 stands for no limit.
void wait(std::vector<Interest>& interests, int milliseconds);

void setEnvironmentVariable(const char* name, const char* value); ///< null removes it

} // namespace vigil::test::sockets

#endif
