// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_BASE_COMCONNECTIONSOCKETTEST_H
#define VIGIL_TESTS_BASE_COMCONNECTIONSOCKETTEST_H

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/ComConnectionSocket.h"
#include "base/wire/FrameHeader.h"
#include "base/wire/SnmpString.h"
#include "support/Deadline.h"
#include "support/FakeService.h"
#include "support/QtMessages.h"
#include "support/RunUntil.h"

struct Received
{
    int dataType;
    std::string payload;
    int callbackId;
};

inline QByteArray frame(quint64 counter, const QByteArray& payload, quint64 updateCounter = 0)
{
    base::FrameHeader header;
    header.dataType = 1;
    header.messageCounter = counter;
    header.updateMessageCounter = updateCounter;
    return header.toBytes(payload.size()) + payload;
}

inline QByteArray prefix(const char* magicAndLength)
{
    return QByteArray::fromHex(magicAndLength);
}

/// A text record with an encoding a little longer than that many bytes.
inline base::SnmpString textOfSize(std::size_t bytes)
{
    base::SnmpString record;
    record.oid = "1.2";
    record.value.assign(bytes, 'x');
    return record;
}

inline const QByteArray junk = "these bytes have never been a frame";

/// A socket under test, the service it connects to, and a record of its signals.
class ComConnectionSocketTest : public testing::Test
{
protected:
    ComConnectionSocketTest() : socket(std::make_unique<base::ComConnectionSocket>())
    {
        const auto keep = [this](const QString& text) { log.push_back(text.toStdString()); };
        using Socket = base::ComConnectionSocket;
        QObject::connect(socket.get(), &Socket::signal_debugMessage, keep);
        QObject::connect(socket.get(), &Socket::signal_logMessage, keep);
        QObject::connect(socket.get(), &Socket::signal_errorMessage, keep);
        QObject::connect(socket.get(), &Socket::signal_loggingMessage, [] { FAIL() << "never emitted"; });
        QObject::connect(socket.get(), &Socket::signal_connected, [this] { events += "connected "; });
        QObject::connect(socket.get(), &Socket::signal_disconnected, [this] { events += "disconnected "; });
        QObject::connect(socket.get(), &Socket::signal_disconnectInfo,
                         [this](const QString& address, uint port, const QString& name) {
                             events += "info(" + address.toStdString() + ',' + std::to_string(port) + ',' +
                                       name.toStdString() + ") ";
                         });
        QObject::connect(socket.get(), &Socket::signal_sigdb_dataReceived,
                         [this](int dataType, QByteArray& payload, int callbackId) {
                             received.push_back({dataType, payload.toStdString(), callbackId});
                             if (const auto action = onReceived) // a copy: it may reset the original
                                 action();
                         });
    }

    base::ConnectionSettings settings() const
    {
        base::ConnectionSettings settings;
        settings.host = QStringLiteral("127.0.0.1");
        settings.port = service.port();
        return settings;
    }

    std::string port() const { return std::to_string(service.port()); }

    void connectToService()
    {
        const int before = service.connections();
        ASSERT_TRUE(socket->connectToServer(settings()));
        ASSERT_TRUE(service.waitForConnections(before + 1));
        log.clear();
        events.clear();
    }

    bool waitForReceived(std::size_t count)
    {
        return support::runUntil([&] { return received.size() >= count; });
    }

    bool waitForLog(const std::string& text)
    {
        return support::runUntil([&] { return logHas(text); });
    }

    bool logHas(const std::string& text) const
    {
        return std::find(log.begin(), log.end(), text) != log.end();
    }

    /// The error lines of the log, without their prefix.
    std::vector<std::string> errors() const
    {
        const std::string prefix = "___ERROR___ CCS::LOG: ";
        std::vector<std::string> lines;
        for (const std::string& line : log) {
            if (line.rfind(prefix, 0) == 0)
                lines.push_back(line.substr(prefix.size()));
        }
        return lines;
    }

    std::vector<std::string> payloads() const
    {
        std::vector<std::string> list;
        for (const Received& one : received)
            list.push_back(one.payload);
        return list;
    }

    /// Sends bytes in one piece and waits until the socket has read them.
    void deliver(const QByteArray& bytes)
    {
        int reads = 0;
        const auto counting =
            QObject::connect(socket->socket(), &QTcpSocket::readyRead, socket.get(), [&reads] { ++reads; });
        service.sendRaw(bytes);
        ASSERT_TRUE(support::runUntil([&] { return reads > 0; }));
        QObject::disconnect(counting);
    }

    /// Waits until the socket will yield to other events during the next read.
    static void letTheYieldComeDue()
    {
        QElapsedTimer elapsed;
        elapsed.start();
        support::runUntil([&] { return elapsed.hasExpired(250); });
    }

    /// Lets the socket read the frame "a" and yield to other events during that read. action is one of them.
    void runDuringTheYield(const std::function<void()>& action)
    {
        letTheYieldComeDue();
        bool hasRun = false;
        onReceived = [&] {
            onReceived = nullptr;
            QMetaObject::invokeMethod(
                socket.get(),
                [&] {
                    action();
                    hasRun = true;
                },
                Qt::QueuedConnection);
        };
        bool hasRead = false;
        bool hasRunDuringTheRead = false;
        // In an event loop: without one, Qt would not carry out deleteLater() during the yield.
        QTimer::singleShot(0, [&] {
            service.sendRaw(frame(1, "a"));
            hasRead = socket->socket()->waitForReadyRead(
                support::deadlineMs); // runs no events but those of the yield
            hasRunDuringTheRead = hasRun;
        });
        ASSERT_TRUE(support::runUntil([&] { return hasRead; }));
        ASSERT_TRUE(hasRunDuringTheRead);
    }

    /// Brings the receiver into the state after a network error.
    void sendJunk()
    {
        deliver(junk);
        ASSERT_THAT(errors(), testing::ElementsAre("___Network error detected - resetting buffers___"));
        log.clear();
    }

    support::FakeService service;
    std::vector<std::string> log;
    std::string events;
    std::vector<Received> received;
    std::function<void()> onReceived;
    std::unique_ptr<base::ComConnectionSocket> socket;
};

#endif
