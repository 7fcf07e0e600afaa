// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "support/FakeService.h"

#include <chrono>

namespace support {

using base::FrameHeader;

namespace {

QByteArray fromStd(const std::string& bytes)
{
    return QByteArray(bytes.data(), static_cast<int>(bytes.size()));
}

FakeService::Frame fromStd(const vigil::test::Frame& frame)
{
    FrameHeader header;
    header.dataType = frame.dataType;
    header.clientCallbackId = frame.callbackId;
    header.messageCounter = frame.counter;
    header.updateMessageCounter = frame.updateCounter;
    return {frame.connection, header, fromStd(frame.payload)};
}

} // namespace

FakeService::FakeService() : m_server(*this) {}

FakeService::~FakeService() = default;

quint16 FakeService::port() const
{
    return m_server.port();
}

void FakeService::connected(int)
{
    record([](Record& record) { ++record.connections; });
}

void FakeService::disconnected(int)
{
    record([](Record& record) { ++record.disconnections; });
}

void FakeService::received(const std::string& bytes, const std::vector<vigil::test::Frame>& frames)
{
    record([&](Record& record) {
        record.bytes += fromStd(bytes);
        for (const vigil::test::Frame& frame : frames)
            record.frames.push_back(fromStd(frame));
    });
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
    vigil::test::Frame frame;
    frame.dataType = static_cast<qint16>(dataType);
    frame.callbackId = callbackId;
    frame.payload = payload.toStdString();
    m_server.send(frame);
}

void FakeService::sendFrame(const FrameHeader& header, const QByteArray& payload)
{
    sendRaw(header.toBytes(payload.size()) + payload);
}

void FakeService::sendRaw(const QByteArray& bytes)
{
    m_server.sendBytes(bytes.toStdString());
}

void FakeService::stopReading()
{
    m_server.stopReading();
}

void FakeService::resumeReading()
{
    m_server.resumeReading();
}

void FakeService::readSlowly(int bytes, int pauseMs)
{
    m_server.readSlowly(static_cast<std::size_t>(bytes), std::chrono::milliseconds(pauseMs));
}

void FakeService::closeConnection()
{
    m_server.closeNewest();
}

void FakeService::closeAfterFrames(int count)
{
    m_server.closeAfterFrames(count);
}

void FakeService::refuseConnections()
{
    m_server.refuseConnections();
}

void FakeService::acceptConnections()
{
    m_server.acceptConnections();
}

} // namespace support
