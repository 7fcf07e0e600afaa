// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_BASE_WIRE_FRAMECUTTER_H
#define VIGIL_BASE_WIRE_FRAMECUTTER_H

#include <QByteArray>

#include <cstddef>

#include "base/wire/FrameHeader.h"

namespace base {

struct Frame
{
    FrameHeader header;
    QByteArray payload;
};

/// Cuts a stream of bytes into frames.
///
/// Takes bytes in pieces of any size and returns whole frames in their order. Its user decides what a bad
/// prefix means, how long a frame may be, and how frames must be numbered.
///
/// Failure: the bytes are not trusted. After a bad prefix the stream cannot continue: call clear().
class FrameCutter
{
public:
    enum class Status { Incomplete, Complete, BadMagic, BadLength };

    void append(const QByteArray& bytes) { m_buffer += bytes; }

    /// Reads the prefix of the next frame and tells whether all of the frame has arrived.
    Status look();

    /// The length field of the next frame; 0 until look() has read it.
    quint64 length() const { return m_length; }

    /// Removes the next frame. look() must have returned Complete.
    Frame take();

    /// True while the rest of a frame is yet to arrive.
    bool isInsideFrame() const { return m_length > 0 || available() > 0; }

    /// The memory of the bytes received and not taken.
    size_t memory() const { return static_cast<size_t>(m_buffer.capacity()); }

    /// Frees the memory of the taken frames. Call it once per burst.
    void discardTaken();

    /// Drops everything that was received.
    void clear();

private:
    int available() const { return m_buffer.size() - m_position; }
    FrameHeader::Prefix readPrefix();

    QByteArray m_buffer;
    int m_position = 0; // of the first byte that was not taken
    quint64 m_length = 0;
};

} // namespace base

#endif
