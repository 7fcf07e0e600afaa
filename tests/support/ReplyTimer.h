// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_REPLYTIMER_H
#define VIGIL_SUPPORT_REPLYTIMER_H

#include <QString>

#include <optional>

namespace support {

/// Measures how long a manager waits for the reply to a GET. It is a manager in this process, so the start of
/// a program does not count.
///
/// Threads: one with an event loop.
class ReplyTimer
{
public:
    /// address and community are those of the agent, processId its own.
    ReplyTimer(const QString& address, const QString& community, qint64 processId);
    ~ReplyTimer();
    ReplyTimer(const ReplyTimer&) = delete;
    ReplyTimer& operator=(const ReplyTimer&) = delete;

    /// Asks for sysUpTime, after the event loop has sent what the test's applications have queued. The time
    /// is without the load of the machine; nothing without a reply.
    std::optional<qint64> measureMs();

private:
    void readReply();

    void* m_session;
    const qint64 m_processId;
    bool m_isReplied = false;
};

} // namespace support

#endif
