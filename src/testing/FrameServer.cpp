// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "testing/FrameServer.h"

#include <algorithm>

namespace vigil::test {

namespace {

constexpr std::size_t usualSlice = 65536;
constexpr int lastWriteMs = 1000;
constexpr std::size_t ownSockets = 2; // before those of the connections

} // namespace

FrameServer::FrameServer(FrameListener& listener)
    : m_listener(listener),
      m_server(sockets::listenOn(0)),
      m_wakeUp(sockets::makeLoop()),
      m_port(sockets::portOf(m_server)),
      m_slice(usualSlice),
      m_thread([this] { run(); })
{}

FrameServer::~FrameServer()
{
    execute([this] { m_isStopped = true; });
    m_thread.join();
}

void FrameServer::execute(const std::function<void()>& command)
{
    std::packaged_task<void()> task(command);
    std::future<void> done = task.get_future();
    {
        const std::lock_guard<std::mutex> lock(m_commandMutex);
        m_commands.push_back(std::move(task));
    }
    std::size_t size = 1;
    sockets::write(m_wakeUp, "", size); // a full buffer wakes up, too
    done.get();
}

void FrameServer::run()
{
    while (!m_isStopped) {
        const std::vector<sockets::Interest> events = waitForEvents();
        acceptNew(); // first: a command may be about a connection that its caller has just made
        runCommands();
        // By handle: a command may have removed connections from the list.
        for (std::size_t i = ownSockets; i < events.size(); ++i) {
            const auto connection = std::find_if(m_connections.begin(), m_connections.end(), [&](auto& each) {
                return each.socket.handle() == events[i].handle;
            });
            if (connection == m_connections.end())
                continue;
            if (events[i].isForWriting)
                flush(*connection);
            if (events[i].isForReading && m_isReading)
                readFrom(*connection);
        }
        forgetEnded();
    }
}

void FrameServer::runCommands()
{
    std::deque<std::packaged_task<void()>> commands;
    {
        const std::lock_guard<std::mutex> lock(m_commandMutex);
        commands.swap(m_commands);
    }
    for (auto& command : commands)
        command();
}

std::vector<sockets::Interest> FrameServer::waitForEvents()
{
    const Clock::time_point now = Clock::now();
    std::vector<sockets::Interest> events = {{m_wakeUp.handle(), true, false},
                                             {m_server.handle(), m_server.isOpen(), false}};
    for (const Connection& connection : m_connections)
        events.push_back({connection.socket.handle(), mayRead(connection, now), !connection.unsent.empty()});
    sockets::wait(events, waitMilliseconds(now));
    if (events[0].isForReading) {
        char buffer[256];
        std::size_t size = sizeof buffer;
        while (sockets::read(m_wakeUp, buffer, size) == sockets::Outcome::Done)
            size = sizeof buffer;
    }
    return events;
}

/// Until the end of the first pause; -1 without a pause.
int FrameServer::waitMilliseconds(Clock::time_point now) const
{
    int milliseconds = -1;
    for (const Connection& connection : m_connections) {
        if (!m_isReading || connection.nextRead <= now)
            continue;
        const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(connection.nextRead - now);
        const int pause = static_cast<int>(rest.count()) + 1;
        milliseconds = milliseconds < 0 ? pause : (std::min)(milliseconds, pause);
    }
    return milliseconds;
}

bool FrameServer::mayRead(const Connection& connection, Clock::time_point now) const
{
    return m_isReading && connection.nextRead <= now;
}

void FrameServer::acceptNew()
{
    while (m_server.isOpen()) {
        Connection connection;
        connection.socket = sockets::acceptFrom(m_server);
        if (!connection.socket.isOpen())
            return;
        connection.number = ++m_accepted;
        m_connections.push_back(std::move(connection));
        m_listener.connected(m_accepted);
    }
}

void FrameServer::readFrom(Connection& connection)
{
    std::string bytes(m_slice, '\0');
    std::size_t size = bytes.size();
    const sockets::Outcome outcome = sockets::read(connection.socket, &bytes[0], size);
    bytes.resize(size);
    if (!bytes.empty())
        take(connection, bytes);
    if (outcome == sockets::Outcome::Ended)
        connection.socket.reset();
    connection.nextRead = Clock::now() + m_pause;
}

void FrameServer::take(Connection& connection, const std::string& bytes)
{
    std::vector<Frame> frames;
    connection.cutter.append(bytes.data(), bytes.size());
    Frame frame;
    frame.connection = connection.number;
    while (connection.cutter.take(frame))
        frames.push_back(frame);
    connection.cutter.discardTaken();
    connection.receivedFrames += static_cast<int>(frames.size());
    m_listener.received(bytes, frames);
    closeIfDue(connection);
}

void FrameServer::write(Connection& connection, const std::string& bytes)
{
    connection.unsent += bytes;
    flush(connection);
}

void FrameServer::flush(Connection& connection)
{
    while (!connection.unsent.empty()) {
        std::size_t size = connection.unsent.size();
        const sockets::Outcome outcome = sockets::write(connection.socket, connection.unsent.data(), size);
        if (outcome == sockets::Outcome::Later)
            return;
        // Only reading ends the connection: more may have arrived before its end.
        connection.unsent.erase(0, outcome == sockets::Outcome::Ended ? std::string::npos : size);
    }
}

void FrameServer::end(Connection& connection)
{
    if (!connection.unsent.empty()) {
        std::vector<sockets::Interest> room = {{connection.socket.handle(), false, true}};
        sockets::wait(room, lastWriteMs);
        flush(connection);
    }
    connection.socket.reset();
}

void FrameServer::closeIfDue(Connection& connection) const
{
    if (m_closeAfter > 0 && connection.receivedFrames >= m_closeAfter)
        end(connection);
}

void FrameServer::forgetEnded()
{
    const auto hasEnded = [](const Connection& each) { return !each.socket.isOpen(); };
    std::vector<int> numbers;
    for (const Connection& connection : m_connections) {
        if (hasEnded(connection))
            numbers.push_back(connection.number);
    }
    m_connections.erase(std::remove_if(m_connections.begin(), m_connections.end(), hasEnded),
                        m_connections.end());
    for (const int number : numbers)
        m_listener.disconnected(number);
}

FrameServer::Connection* FrameServer::find(int number)
{
    if (m_connections.empty())
        return nullptr;
    if (number == newest)
        return &m_connections.back();
    const auto found = std::find_if(m_connections.begin(), m_connections.end(),
                                    [number](const Connection& each) { return each.number == number; });
    return found == m_connections.end() ? nullptr : &*found;
}

void FrameServer::send(const Frame& frame, int connection)
{
    execute([&] {
        if (Connection* receiver = find(connection)) {
            Frame numbered = frame;
            numbered.counter = ++receiver->sentFrames;
            write(*receiver, encode(numbered));
        }
    });
}

void FrameServer::sendBytes(const std::string& bytes)
{
    execute([&] {
        if (Connection* receiver = find(newest))
            write(*receiver, bytes);
    });
}

void FrameServer::stopReading()
{
    execute([this] { m_isReading = false; });
}

void FrameServer::resumeReading()
{
    execute([this] { m_isReading = true; });
}

void FrameServer::readSlowly(std::size_t bytes, std::chrono::milliseconds pause)
{
    execute([&] {
        m_slice = bytes;
        m_pause = pause;
        m_isReading = true;
    });
}

void FrameServer::closeNewest()
{
    execute([this] {
        if (!m_connections.empty())
            end(m_connections.back());
        forgetEnded();
    });
}

void FrameServer::closeAll()
{
    execute([this] {
        for (Connection& connection : m_connections)
            end(connection);
        forgetEnded();
    });
}

void FrameServer::closeAfterFrames(int count)
{
    execute([&] {
        m_closeAfter = count;
        if (!m_connections.empty())
            closeIfDue(m_connections.back());
        forgetEnded();
    });
}

void FrameServer::refuseConnections()
{
    execute([this] {
        m_server.reset();
        if (!m_portHolder.isOpen())
            m_portHolder = sockets::reserve(m_port);
    });
}

void FrameServer::acceptConnections()
{
    execute([this] {
        m_portHolder.reset();
        if (!m_server.isOpen())
            m_server = sockets::listenOn(m_port);
    });
}

} // namespace vigil::test
