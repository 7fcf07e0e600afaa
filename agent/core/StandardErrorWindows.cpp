// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/core/StandardError.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <thread>

#include <io.h>
#include <windows.h>

namespace agent::standardError {

namespace {

constexpr int mostWaiting = 65'536; // bytes, as in a pipe of other systems
constexpr std::chrono::milliseconds lastWait(500);
constexpr int standardErrorNumber = 2;

HANDLE standardErrorHandle()
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(standardErrorNumber));
}

/// A console gets Unicode; its code page may lack letters. Everything else gets UTF-8.
void writeTo(HANDLE output, const QByteArray& line)
{
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(output, &mode)) {
        const QString text = QString::fromUtf8(line);
        WriteConsoleW(output, text.utf16(), static_cast<DWORD>(text.size()), &written, nullptr);
    } else {
        WriteFile(output, line.constData(), static_cast<DWORD>(line.size()), &written, nullptr);
    }
}

/// Writes to a console or a pipe in a thread of its own: Windows cannot tell whether a write would wait. A
/// console waits for as long as text in it is selected.
///
/// Threads: any.
/// Ownership: one object, for the life of the process. A thread that is still writing at the end is left to
/// the system.
class Writer
{
public:
    Writer()
    {
        std::thread([this] { run(); }).detach();
    }

    bool add(const QByteArray& line)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_bytes + line.size() > mostWaiting)
            return false;
        m_bytes += line.size();
        m_lines.push_back(line);
        m_changed.notify_all();
        return true;
    }

    void waitUntilWritten()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait_for(lock, lastWait, [this] { return m_lines.empty(); });
    }

private:
    void run()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (true) {
            m_changed.wait(lock, [this] { return !m_lines.empty(); });
            const QByteArray line = m_lines.front();
            lock.unlock();
            writeTo(standardErrorHandle(), line);
            lock.lock();
            m_bytes -= line.size();
            m_lines.pop_front(); // only now: waitUntilWritten() waits for the last line, too
            m_changed.notify_all();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_lines; // the first one is being written
    int m_bytes = 0;                // of all lines
};

Writer& writer()
{
    static auto* const writer = [] {
        auto* made = new Writer; // never destroyed: its thread may be writing
        std::atexit([] { standardError::waitUntilWritten(); });
        return made;
    }();
    return *writer;
}

} // namespace

bool write(const QByteArray& line)
{
    if (GetFileType(standardErrorHandle()) != FILE_TYPE_DISK)
        return writer().add(line);
    writeTo(standardErrorHandle(), line);
    return true;
}

void waitUntilWritten()
{
    writer().waitUntilWritten();
}

bool isJournal()
{
    return false;
}

} // namespace agent::standardError

namespace agent {

void standardOutput::print(const QString& text)
{
    standardError::writeTo(GetStdHandle(STD_OUTPUT_HANDLE), text.toUtf8());
}

} // namespace agent
