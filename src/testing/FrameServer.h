// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTING_FRAMESERVER_H
#define VIGIL_TESTING_FRAMESERVER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "testing/Frame.h"
#include "testing/Sockets.h"

namespace vigil::test {

/// Hears of everything on the server's thread, and must not call the server.
class FrameListener
{
public:
    virtual void connected(int connection) = 0;
    virtual void disconnected(int connection) = 0;

    /// All that was read at once, and the frames that are complete with it.
    virtual void received(const std::string& bytes, const std::vector<Frame>& frames) = 0;

protected:
    ~FrameListener() = default;
};

/// A TCP server on a free port of 127.0.0.1: it cuts what it reads into frames, sends bytes, and fails on
/// demand.
///
/// Threads: a thread of its own, from construction to destruction. Any thread may call it; each operation
/// returns once it is carried out.
///
/// Ownership: the listener must live longer.
///
/// Failure: the constructor and acceptConnections() throw std::system_error.
class FrameServer
{
public:
    explicit FrameServer(FrameListener& listener);
    ~FrameServer();
    FrameServer(const FrameServer&) = delete;
    FrameServer& operator=(const FrameServer&) = delete;

    std::uint16_t port() const { return m_port; }

    static constexpr int newest = 0; ///< in place of a connection's number

    /// A frame with the next number of the connection, from 1. Does nothing if the connection has ended.
    void send(const Frame& frame, int connection = newest);

    /// Any bytes, to the newest connection.
    void sendBytes(const std::string& bytes);

    /// Leaves all bytes in the system's buffers, on later connections too.
    void stopReading();
    void resumeReading();

    /// Reads at most this many bytes, then none for a while, and so on.
    void readSlowly(std::size_t bytes, std::chrono::milliseconds pause);

    void closeNewest();
    void closeAll();

    /// Closes the newest or else the next connection as soon as it has received this number of frames. 0
    /// switches this off.
    void closeAfterFrames(int count);

    /// Refuses new connections and keeps the port. Existing connections stay.
    void refuseConnections();
    void acceptConnections();

private:
    using Clock = std::chrono::steady_clock;

    struct Connection
    {
        int number = 0;
        sockets::Socket socket;
        FrameCutter cutter;
        std::string unsent;
        std::uint64_t sentFrames = 0;
        int receivedFrames = 0;
        Clock::time_point nextRead;
    };

    void execute(const std::function<void()>& command);
    void run();
    void runCommands();
    std::vector<sockets::Interest> waitForEvents();
    int waitMilliseconds(Clock::time_point now) const;
    bool mayRead(const Connection& connection, Clock::time_point now) const;
    void acceptNew();
    void readFrom(Connection& connection);
    void take(Connection& connection, const std::string& bytes);
    void write(Connection& connection, const std::string& bytes);
    static void flush(Connection& connection);
    static void end(Connection& connection);
    void closeIfDue(Connection& connection) const;
    void forgetEnded();
    Connection* find(int number);

    FrameListener& m_listener;
    sockets::Socket m_server;
    sockets::Socket m_wakeUp;
    std::uint16_t m_port;

    std::mutex m_commandMutex; // guards m_commands; all else belongs to the thread
    std::deque<std::packaged_task<void()>> m_commands;

    sockets::Socket m_portHolder;
    std::vector<Connection> m_connections;
    int m_accepted = 0;
    int m_closeAfter = 0;
    bool m_isReading = true;
    bool m_isStopped = false;
    std::size_t m_slice;
    std::chrono::milliseconds m_pause{0};
    std::thread m_thread; // last: it uses all others
};

} // namespace vigil::test

#endif
