// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_SUPPORT_FAKEAPPLICATION_H
#define VIGIL_TESTS_SUPPORT_FAKEAPPLICATION_H

#include <QByteArray>
#include <QObject>
#include <QTcpSocket>

#include <functional>
#include <string>
#include <vector>

#include "base/wire/FrameCutter.h"

namespace support {

/// The agent's peer under the control of a test. It can also violate the protocol.
///
/// Threads: one with an event loop; questions are answered from there. Failure: isConnected() tells.
class FakeApplication : public QObject
{
    Q_OBJECT

public:
    /// One record from the agent.
    struct Request
    {
        int callbackId;
        int dataType;
        int storeType;
        std::string oid;
        std::string value; ///< integers as decimal text
    };

    explicit FakeApplication(quint16 port);
    ~FakeApplication() override;

    quint16 localPort() const { return m_socket.localPort(); }
    bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }
    bool waitForDisconnect();
    void close() { m_socket.disconnectFromHost(); }

    /// Leaves everything the agent sends from now on in the kernel's buffers.
    void stopReading();

    // Frames leave when the event loop runs next, so those sent in a row arrive together: the agent waits
    // only 200 ms for the summary that follows a status.

    /// Identifiers are relative to the enterprise's root.
    void publish(const std::string& oid, int value);
    void publish(const std::string& oid, const std::string& value);
    void publishAndNotify(const std::string& oid, int value);
    void publishAndNotify(const std::string& oid, const std::string& value);
    void unset(const std::string& oid);

    void answer(const Request& question, int errorStatus);

    /// Sends a frame around any payload, numbered as the next one.
    void sendFrame(int dataType, int callbackId, const QByteArray& payload);
    /// At once, together with the frames before.
    void sendBytes(const QByteArray& bytes);
    void skipFrameNumber() { ++m_sentFrames; }

    /// Called on a question. The default accepts the value.
    std::function<void(const Request&)> onQuestion = [this](const Request& question) { answer(question, 0); };

    /// Called on a committed value. The default does nothing.
    std::function<void(const Request&)> onCommit = [](const Request&) {};

    const std::vector<Request>& questions() const { return m_questions; }
    const std::vector<Request>& commits() const { return m_commits; }

private:
    void readFrames();
    void handle(const base::Frame& frame);

    QTcpSocket m_socket;
    base::FrameCutter m_frames;
    quint64 m_sentFrames = 0;
    std::vector<Request> m_questions;
    std::vector<Request> m_commits;
};

} // namespace support

#endif
