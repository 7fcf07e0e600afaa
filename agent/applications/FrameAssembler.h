// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_FRAMEASSEMBLER_H
#define VIGIL_AGENT_APPLICATIONS_FRAMEASSEMBLER_H

#include <QByteArray>
#include <QString>

#include "base/wire/FrameHeader.h"

namespace agent {

/// Cuts the byte stream of one application into frames.
///
/// Purpose: takes bytes in whatever pieces they arrive and gives the frames back whole, in order. Frames must
/// be numbered from 1 without a gap.
///
/// Threads: the agent has one.
/// Failure: the bytes are not trusted. What cannot be a frame ends the stream: next() says Malformed from
/// then on, and problem() why. No more than one frame of the permitted size and one burst are ever held.
class FrameAssembler
{
public:
    struct Frame
    {
        base::FrameHeader header;
        QByteArray payload;
    };

    enum class Result { Complete, Incomplete, Malformed };

    /// maxLength limits what follows the length field of a frame.
    explicit FrameAssembler(int maxLength = static_cast<int>(base::FrameHeader::maxLength))
        : m_maxLength(maxLength)
    {}

    void append(const QByteArray& bytes) { m_buffer += bytes; }

    /// Takes the next frame out.
    Result next(Frame& frame);

    /// Gives back the room of the frames that have been taken; call it once per burst.
    void discardTaken();

    /// The number of frames that have been taken out.
    quint64 count() const { return m_lastCounter; }

    /// True when a frame has begun whose end has not come.
    bool isInsideFrame() const { return m_length > 0 || available() > 0; }

    const QString& problem() const { return m_problem; }

private:
    int available() const { return m_buffer.size() - m_position; }
    QByteArray take(int count);
    Result readPrefix();
    Result malformed(const QString& problem);

    const int m_maxLength;
    QByteArray m_buffer;
    int m_position = 0;
    int m_length = 0; // of the frame whose prefix has been read, else 0
    quint64 m_lastCounter = 0;
    QString m_problem;
};

} // namespace agent

#endif
