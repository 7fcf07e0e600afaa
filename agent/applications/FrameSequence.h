// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_FRAMESEQUENCE_H
#define VIGIL_AGENT_APPLICATIONS_FRAMESEQUENCE_H

#include <QByteArray>

#include "agent/core/Error.h"
#include "base/wire/FrameCutter.h"

namespace agent {

/// Reads the frames of one application. They are numbered from 1 without a gap and not longer than the limit.
///
/// Failure: the bytes are not trusted. The first malformed frame ends the sequence: from then on next()
/// returns Malformed, and error() gives the reason. The memory is bounded by one frame of the permitted size
/// and one burst.
class FrameSequence
{
public:
    enum class Result { Complete, Incomplete, Malformed };

    /// maxLength limits the length field of a frame.
    explicit FrameSequence(int maxLength = static_cast<int>(base::FrameHeader::maxLength))
        : m_maxLength(static_cast<quint64>(maxLength))
    {}

    void append(const QByteArray& bytes) { m_cutter.append(bytes); }

    /// Takes the next frame.
    Result next(base::Frame& frame);

    /// Frees the memory of the taken frames. Call it once per burst.
    void discardTaken() { m_cutter.discardTaken(); }

    /// The number of frames taken so far.
    quint64 count() const { return m_count; }

    /// True while the rest of a frame is yet to arrive.
    bool isInsideFrame() const { return m_cutter.isInsideFrame(); }

    /// The memory of the bytes that are yet to become a frame.
    size_t memory() const { return m_cutter.memory(); }

    const Error& error() const { return m_error; }

private:
    Error prefixError(base::FrameCutter::Status status) const;
    Result malformed(Error error);

    const quint64 m_maxLength;
    base::FrameCutter m_cutter;
    quint64 m_count = 0;
    Error m_error;
};

} // namespace agent

#endif
