// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/FrameAssembler.h"

namespace agent {

using base::FrameHeader;

FrameAssembler::Result FrameAssembler::next(Frame& frame)
{
    if (!m_problem.isEmpty())
        return Result::Malformed;
    if (m_length == 0) {
        const Result prefix = readPrefix();
        if (prefix != Result::Complete)
            return prefix;
    }
    if (available() < m_length)
        return Result::Incomplete;

    frame.header = FrameHeader::readRemainder(take(FrameHeader::remainderSize));
    frame.payload = take(m_length - FrameHeader::remainderSize);
    m_length = 0;
    if (frame.header.messageCounter != m_lastCounter + 1)
        return malformed(
            QStringLiteral("frame %1 follows frame %2").arg(frame.header.messageCounter).arg(m_lastCounter));
    m_lastCounter = frame.header.messageCounter;
    return Result::Complete;
}

void FrameAssembler::discardTaken()
{
    if (m_position == 0)
        return;
    m_buffer = m_buffer.mid(m_position); // a copy: removing bytes would keep the room of the largest frame
    m_position = 0;
}

QByteArray FrameAssembler::take(int count)
{
    const QByteArray bytes = m_buffer.mid(m_position, count);
    m_position += count;
    return bytes;
}

FrameAssembler::Result FrameAssembler::readPrefix()
{
    if (available() < FrameHeader::prefixSize)
        return Result::Incomplete;
    quint64 length = 0;
    switch (FrameHeader::readPrefix(take(FrameHeader::prefixSize), length)) {
    case FrameHeader::Prefix::BadMagic:
        return malformed(QStringLiteral("a frame starts with a wrong magic"));
    case FrameHeader::Prefix::BadLength:
        return malformed(QStringLiteral("a frame has the length %1").arg(length));
    case FrameHeader::Prefix::Good:
        break;
    }
    if (length > static_cast<quint64>(m_maxLength))
        return malformed(
            QStringLiteral("a frame has the length %1, --max-frame allows %2").arg(length).arg(m_maxLength));
    m_length = static_cast<int>(length);
    return Result::Complete;
}

FrameAssembler::Result FrameAssembler::malformed(const QString& problem)
{
    m_problem = problem;
    m_buffer.clear();
    m_position = 0;
    return Result::Malformed;
}

} // namespace agent
