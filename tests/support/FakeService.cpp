// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/FakeService.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <deque>
#include <future>
#include <stdexcept>

namespace support {

using base::FrameHeader;

namespace {

constexpr int pollMs = 2; // how long an idle service waits before it looks for commands again

struct Connection
{
    int number = 0;
    std::unique_ptr<QTcpSocket> socket;
    QByteArray buffer;
    quint64 sentFrames = 0;
    int receivedFrames = 0;
};

} // namespace

/// The thread's loop asks its sockets one after the other instead of running an event loop: Qt delivers no
/// events in a process without an application object.
class FakeServiceThread : public QThread
{
public:
    explicit FakeServiceThread(FakeService& service) : m_service(service)
    {
        start();
        try {
            execute([this] { m_port = listen(0); });
        } catch (...) {
            stop();
            throw;
        }
    }

    ~FakeServiceThread() override { stop(); }

    quint16 port() const { return m_port; }

    /// Runs command in the service's thread and waits for its end.
    void execute(const std::function<void()>& command)
    {
        std::packaged_task<void()> task(command);
        std::future<void> done = task.get_future();
        {
            const std::lock_guard<std::mutex> lock(m_commandMutex);
            m_commands.push_back(std::move(task));
        }
        done.get();
    }

    void write(const QByteArray& bytes)
    {
        if (m_connections.empty())
            return;
        QTcpSocket& socket = *m_connections.back().socket;
        socket.write(bytes);
        socket.flush();
    }

    quint64 nextCounter() { return m_connections.empty() ? 0 : ++m_connections.back().sentFrames; }

    void setReading(bool reading)
    {
        m_isReading = reading;
        for (Connection& connection : m_connections)
            applyReading(*connection.socket);
    }

    void readSlowly(int bytes, int pauseMs)
    {
        m_slice = bytes;
        m_pauseMs = static_cast<unsigned long>(pauseMs);
        setReading(true);
    }

    void closeNewest()
    {
        if (!m_connections.empty())
            end(m_connections.back());
        forgetEnded();
    }

    void setCloseAfter(int frames)
    {
        m_closeAfter = frames;
        if (!m_connections.empty())
            closeIfDue(m_connections.back());
        forgetEnded();
    }

    void refuse()
    {
        m_server->close();
        // A port bound without listening refuses connections, and no other process gets it.
        m_portHolder = std::make_unique<QTcpSocket>();
        m_portHolder->bind(QHostAddress(QHostAddress::LocalHost), m_port);
    }

    void accept()
    {
        m_portHolder.reset();
        if (!m_server->isListening())
            listen(m_port);
    }

private:
    void stop()
    {
        execute([this] { m_stopped = true; });
        m_ended.get_future().wait(); // the thread sanitizer does not see Qt's wait()
        wait();
    }

    void run() override
    {
        m_server = std::make_unique<QTcpServer>();
        while (!m_stopped) {
            runCommands();
            acceptNew();
            for (Connection& connection : m_connections)
                serve(connection);
            forgetEnded();
        }
        m_connections.clear();
        m_portHolder.reset();
        m_server.reset();
        m_ended.set_value();
    }

    void runCommands()
    {
        std::deque<std::packaged_task<void()>> commands;
        {
            const std::lock_guard<std::mutex> lock(m_commandMutex);
            commands.swap(m_commands);
        }
        for (auto& command : commands)
            command();
    }

    quint16 listen(quint16 port)
    {
        if (!m_server->listen(QHostAddress::LocalHost, port))
            throw std::runtime_error("the fake service cannot listen: " +
                                     m_server->errorString().toStdString());
        return m_server->serverPort();
    }

    void acceptNew()
    {
        if (!m_server->isListening())
            QThread::msleep(m_connections.empty() ? pollMs : 0);
        else if (!m_server->hasPendingConnections())
            m_server->waitForNewConnection(m_connections.empty() ? pollMs : 0);
        while (QTcpSocket* socket = m_server->nextPendingConnection()) {
            socket->setParent(nullptr);
            Connection connection;
            connection.number = ++m_accepted;
            connection.socket.reset(socket);
            applyReading(*socket);
            m_connections.push_back(std::move(connection));
            m_service.record([](auto& record) { ++record.connections; });
        }
    }

    void applyReading(QTcpSocket& socket) const
    {
        socket.setReadBufferSize(m_isReading ? m_slice : 1); // else writing would read along
    }

    void serve(Connection& connection)
    {
        QTcpSocket& socket = *connection.socket;
        if (socket.bytesToWrite() > 0)
            socket.waitForBytesWritten(pollMs);
        if (!m_isReading) {
            QThread::msleep(pollMs);
            return;
        }
        if (socket.bytesAvailable() == 0)
            socket.waitForReadyRead(pollMs);
        take(connection, socket.readAll());
        if (m_pauseMs > 0)
            QThread::msleep(m_pauseMs);
    }

    void take(Connection& connection, const QByteArray& bytes)
    {
        if (bytes.isEmpty())
            return;
        const std::vector<FakeService::Frame> frames = takeFrames(connection, bytes);
        m_service.record([&](auto& record) {
            record.bytes += bytes;
            record.frames.insert(record.frames.end(), frames.begin(), frames.end());
        });
        closeIfDue(connection);
    }

    /// The rest of the buffer moves once for all frames: with a backlog of megabytes each move is expensive.
    static std::vector<FakeService::Frame> takeFrames(Connection& connection, const QByteArray& bytes)
    {
        std::vector<FakeService::Frame> frames;
        connection.buffer += bytes;
        int taken = 0;
        while (const int size = wholeFrameSize(connection.buffer, taken)) {
            frames.push_back(frameAt(connection, taken, size));
            taken += size;
        }
        connection.buffer.remove(0, taken);
        connection.receivedFrames += static_cast<int>(frames.size());
        return frames;
    }

    /// 0 if the frame at this offset is not complete.
    static int wholeFrameSize(const QByteArray& buffer, int offset)
    {
        quint64 length = 0;
        if (FrameHeader::readPrefix(buffer.mid(offset, FrameHeader::prefixSize), length) !=
            FrameHeader::Prefix::Good)
            return 0;
        const quint64 size = FrameHeader::prefixSize + length;
        return static_cast<quint64>(buffer.size() - offset) >= size ? static_cast<int>(size) : 0;
    }

    static FakeService::Frame frameAt(const Connection& connection, int offset, int size)
    {
        const QByteArray remainder =
            connection.buffer.mid(offset + FrameHeader::prefixSize, FrameHeader::remainderSize);
        return {connection.number, FrameHeader::readRemainder(remainder),
                connection.buffer.mid(offset + FrameHeader::size, size - FrameHeader::size)};
    }

    void closeIfDue(Connection& connection)
    {
        if (m_closeAfter > 0 && connection.receivedFrames >= m_closeAfter)
            end(connection);
    }

    static void end(Connection& connection)
    {
        QTcpSocket& socket = *connection.socket;
        socket.disconnectFromHost();
        if (socket.state() != QAbstractSocket::UnconnectedState)
            socket.waitForDisconnected(1000);
        socket.abort();
    }

    void forgetEnded()
    {
        const auto ended =
            std::remove_if(m_connections.begin(), m_connections.end(), [](const Connection& connection) {
                return connection.socket->state() == QAbstractSocket::UnconnectedState;
            });
        const int count = static_cast<int>(m_connections.end() - ended);
        if (count == 0)
            return;
        m_connections.erase(ended, m_connections.end());
        m_service.record([count](auto& record) { record.disconnections += count; });
    }

    FakeService& m_service;
    std::mutex m_commandMutex; // guards m_commands; all else belongs to the thread
    std::deque<std::packaged_task<void()>> m_commands;
    std::unique_ptr<QTcpServer> m_server;
    std::unique_ptr<QTcpSocket> m_portHolder;
    std::vector<Connection> m_connections;
    quint16 m_port = 0;
    int m_accepted = 0;
    int m_closeAfter = 0;
    bool m_isReading = true;
    int m_slice = 0; // bytes read at a time; 0 means all
    unsigned long m_pauseMs = 0;
    bool m_stopped = false;
    std::promise<void> m_ended;
};

FakeService::FakeService() : m_thread(std::make_unique<FakeServiceThread>(*this)) {}

FakeService::~FakeService() = default;

quint16 FakeService::port() const
{
    return m_thread->port();
}

std::vector<FakeService::Frame> FakeService::frames(std::size_t skipped) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return {m_record.frames.begin() + static_cast<std::ptrdiff_t>(skipped), m_record.frames.end()};
}

int FakeService::frameCount() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(m_record.frames.size());
}

QByteArray FakeService::receivedBytes() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_record.bytes;
}

int FakeService::connections() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_record.connections;
}

int FakeService::disconnections() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_record.disconnections;
}

template <typename Predicate>
bool FakeService::waitUntil(int timeoutMs, Predicate predicate) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), predicate);
}

template <typename Change>
void FakeService::record(Change change)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    change(m_record);
    m_changed.notify_all();
}

bool FakeService::waitForConnections(int count, int timeoutMs) const
{
    return waitUntil(timeoutMs, [&] { return m_record.connections >= count; });
}

bool FakeService::waitForDisconnections(int count, int timeoutMs) const
{
    return waitUntil(timeoutMs, [&] { return m_record.disconnections >= count; });
}

bool FakeService::waitForFrames(int count, int timeoutMs) const
{
    return waitUntil(timeoutMs, [&] { return static_cast<int>(m_record.frames.size()) >= count; });
}

bool FakeService::waitForFrame(const std::function<bool(const Frame&)>& predicate, int timeoutMs,
                               std::size_t skipped) const
{
    std::size_t judged = skipped; // there may be many frames, so each one is judged once
    return waitUntil(timeoutMs, [&] {
        while (judged < m_record.frames.size()) {
            if (predicate(m_record.frames[judged++]))
                return true;
        }
        return false;
    });
}

void FakeService::send(int dataType, const QByteArray& payload, int callbackId)
{
    m_thread->execute([&] {
        FrameHeader header;
        header.dataType = static_cast<qint16>(dataType);
        header.clientCallbackId = callbackId;
        header.messageCounter = m_thread->nextCounter();
        m_thread->write(header.toBytes(payload.size()) + payload);
    });
}

void FakeService::sendFrame(const FrameHeader& header, const QByteArray& payload)
{
    sendRaw(header.toBytes(payload.size()) + payload);
}

void FakeService::sendRaw(const QByteArray& bytes)
{
    m_thread->execute([&] { m_thread->write(bytes); });
}

void FakeService::stopReading()
{
    m_thread->execute([this] { m_thread->setReading(false); });
}

void FakeService::resumeReading()
{
    m_thread->execute([this] { m_thread->setReading(true); });
}

void FakeService::closeConnection()
{
    m_thread->execute([this] { m_thread->closeNewest(); });
}

void FakeService::closeAfterFrames(int count)
{
    m_thread->execute([this, count] { m_thread->setCloseAfter(count); });
}

void FakeService::refuseConnections()
{
    m_thread->execute([this] { m_thread->refuse(); });
}

void FakeService::readSlowly(int bytes, int pauseMs)
{
    m_thread->execute([&] { m_thread->readSlowly(bytes, pauseMs); });
}

void FakeService::acceptConnections()
{
    m_thread->execute([this] { m_thread->accept(); });
}

} // namespace support
