// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/FrameCutter.h"

namespace base {

FrameCutter::Status FrameCutter::look()
{
    if (m_length == 0) {
        if (available() < FrameHeader::prefixSize)
            return Status::Incomplete;
        switch (FrameHeader::readPrefix(takeBytes(FrameHeader::prefixSize), m_length)) {
        case FrameHeader::Prefix::BadMagic:
            return Status::BadMagic;
        case FrameHeader::Prefix::BadLength:
            return Status::BadLength;
        case FrameHeader::Prefix::Good:
            break;
        }
    }
    return static_cast<quint64>(available()) < m_length ? Status::Incomplete : Status::Complete;
}

Frame FrameCutter::take()
{
    Frame frame;
    frame.header = FrameHeader::readRemainder(takeBytes(FrameHeader::remainderSize));
    frame.payload = takeBytes(static_cast<int>(m_length) - FrameHeader::remainderSize);
    m_length = 0;
    return frame;
}

void FrameCutter::discardTaken()
{
    if (m_position == 0)
        return;
    m_buffer = m_buffer.mid(m_position); // a copy: removing bytes would keep the memory of the largest frame
    m_position = 0;
}

void FrameCutter::clear()
{
    m_buffer.clear();
    m_position = 0;
    m_length = 0;
}

QByteArray FrameCutter::takeBytes(int count)
{
    QByteArray bytes = m_buffer.mid(m_position, count);
    m_position += count;
    return bytes;
}

} // namespace base
