// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_FAKESERVICE_H
#define VIGIL_SUPPORT_FAKESERVICE_H

#include <QByteArray>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "base/wire/FrameHeader.h"
#include "support/Deadline.h"
#include "testing/FrameServer.h"

namespace support {

/// A scriptable peer of the library: the server of <vigil/testing/FakeService.h>, with Qt's types and a
/// record of every frame. It sends frames on request and fails on demand.
///
/// Purpose: tests of the library's communication with the agent. It accepts any number of connections;
/// sending and faults apply to the newest one. A typical test:
///
///     FakeService service;
///     … connect to service.port() …
///     ASSERT_TRUE(service.waitForConnections(1));
///     service.send(base::SnmpIntType, payload, base::Validation);
///     ASSERT_TRUE(service.waitForFrames(1));
///     EXPECT_EQ(service.frames()[0].header.messageCounter, 1u);
///
/// Threads: runs in a separate thread from construction to destruction. It needs no QCoreApplication:
/// the program under test may not have one yet. Any thread may call it; calls return once the service has
/// carried them out. Waiting blocks the caller, so do not wait on the thread of the client's event loop.
///
/// Failure: the constructor throws std::system_error if no port is free. Waiting returns false on time-out.
class FakeService final : private vigil::test::FrameListener
{
public:
    static constexpr int defaultTimeoutMs = deadlineMs;

    struct Frame
    {
        int connection; ///< number of the connection, from 1
        base::FrameHeader header;
        QByteArray payload;
    };

    FakeService();
    ~FakeService();
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    quint16 port() const;

    // Received so far. The counts start at 0 and never decrease.

    /// The complete frames of all connections in the order of their arrival, without the first ones.
    std::vector<Frame> frames(std::size_t skipped = 0) const;

    /// The same as frames().size(), without copying them all.
    int frameCount() const;

    /// All bytes of all connections, frames or not.
    QByteArray receivedBytes() const;

    /// How many connections were accepted, and how many of these have ended.
    int connections() const;
    int disconnections() const;

    bool waitForConnections(int count, int timeoutMs = defaultTimeoutMs) const;
    bool waitForDisconnections(int count, int timeoutMs = defaultTimeoutMs) const;
    bool waitForFrames(int count, int timeoutMs = defaultTimeoutMs) const;

    /// Waits for a frame with this property, after the first ones.
    bool waitForFrame(const std::function<bool(const Frame&)>& predicate, int timeoutMs = defaultTimeoutMs,
                      std::size_t skipped = 0) const;

    // Sending, to the newest connection.

    /// A frame with the next message counter of the connection, beginning with 1.
    void send(int dataType, const QByteArray& payload, int callbackId);

    /// A frame exactly as given. It does not advance the counter of send().
    void sendFrame(const base::FrameHeader& header, const QByteArray& payload);

    /// Any bytes.
    void sendRaw(const QByteArray& bytes);

    // Faults.

    /// Leaves all incoming bytes in the system's buffers, on later connections too.
    void stopReading();
    void resumeReading();

    /// Reads at most this many bytes, then none for a while, and so on.
    void readSlowly(int bytes, int pauseMs);

    /// Closes the newest connection; later ones are still accepted.
    void closeConnection();

    /// Closes the newest or else the next connection as soon as it has received this number of frames. 0
    /// switches this off.
    void closeAfterFrames(int count);

    /// Refuses new connections and keeps the port reserved. Existing connections stay.
    void refuseConnections();

    /// Accepts connections again, on the same port.
    void acceptConnections();

private:
    struct Record
    {
        std::vector<Frame> frames;
        QByteArray bytes;
        int connections = 0;
        int disconnections = 0;
    };

    void connected(int connection) override;
    void disconnected(int connection) override;
    void received(const std::string& bytes, const std::vector<vigil::test::Frame>& frames) override;

    template <typename Predicate>
    bool waitUntil(int timeoutMs, Predicate predicate) const;
    template <typename Change>
    void record(Change change);

    mutable std::mutex m_mutex; // guards m_record
    mutable std::condition_variable m_changed;
    Record m_record;
    vigil::test::FrameServer m_server; // last: its thread uses all others
};

} // namespace support

#endif
