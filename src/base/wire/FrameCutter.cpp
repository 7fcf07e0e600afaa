// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "base/wire/FrameCutter.h"

#include <utility>

namespace base {

FrameCutter::Status FrameCutter::look()
{
    if (m_length == 0) {
        if (available() < FrameHeader::prefixSize)
            return Status::Incomplete;
        switch (readPrefix()) {
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

FrameHeader::Prefix FrameCutter::readPrefix()
{
    const int start = std::exchange(m_position, m_position + FrameHeader::prefixSize);
    return FrameHeader::readPrefix(m_buffer, m_length, start);
}

Frame FrameCutter::take()
{
    Frame frame;
    frame.header = FrameHeader::readRemainder(m_buffer, m_position);
    frame.payload = m_buffer.mid(m_position + FrameHeader::remainderSize,
                                 static_cast<int>(m_length) - FrameHeader::remainderSize);
    m_position += static_cast<int>(m_length);
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

} // namespace base
