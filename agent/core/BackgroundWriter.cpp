// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/BackgroundWriter.h"

#include <chrono>
#include <thread>
#include <utility>

namespace agent {

namespace {

constexpr int mostPending = 65'536; // bytes, as in a pipe of other systems
constexpr std::chrono::milliseconds lastWait(500);

} // namespace

BackgroundWriter::BackgroundWriter()
{
    std::thread([this] { run(); }).detach();
}

bool BackgroundWriter::add(int bytes, std::function<void()> write)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_bytes + bytes > mostPending)
        return false;
    m_bytes += bytes;
    m_writes.push_back({bytes, std::move(write)});
    m_changed.notify_all();
    return true;
}

void BackgroundWriter::waitUntilWritten()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait_for(lock, lastWait, [this] { return m_writes.empty(); });
}

void BackgroundWriter::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return !m_writes.empty(); });
        const Write write = m_writes.front();
        lock.unlock();
        write.run();
        lock.lock();
        m_bytes -= write.bytes;
        m_writes.pop_front(); // only now: waitUntilWritten() waits for the last one, too
        m_changed.notify_all();
    }
}

} // namespace agent
