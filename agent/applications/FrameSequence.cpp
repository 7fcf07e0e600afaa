// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/applications/FrameSequence.h"

#include <utility>

namespace agent {

using Status = base::FrameCutter::Status;

FrameSequence::Result FrameSequence::next(base::Frame& frame)
{
    if (m_error)
        return Result::Malformed;
    const Status status = m_cutter.look();
    if (Error error = prefixError(status))
        return malformed(std::move(error));
    if (status == Status::Incomplete)
        return Result::Incomplete;

    frame = m_cutter.take();
    if (frame.header.messageCounter != m_count + 1)
        return malformed(
            Error(QStringLiteral("frame %1 follows frame %2").arg(frame.header.messageCounter).arg(m_count)));
    ++m_count;
    return Result::Complete;
}

Error FrameSequence::prefixError(Status status) const
{
    if (status == Status::BadMagic)
        return Error(QStringLiteral("a frame starts with a wrong magic"));
    if (status == Status::BadLength)
        return Error(QStringLiteral("a frame has the length %1").arg(m_cutter.length()));
    if (m_cutter.length() > m_maxLength)
        return Error(QStringLiteral("a frame has the length %1, --max-frame allows %2")
                         .arg(m_cutter.length())
                         .arg(m_maxLength));
    return Error();
}

FrameSequence::Result FrameSequence::malformed(Error error)
{
    m_error = std::move(error);
    m_cutter.clear();
    return Result::Malformed;
}

} // namespace agent
