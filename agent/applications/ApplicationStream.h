// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONSTREAM_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONSTREAM_H

#include <QByteArray>

#include "agent/applications/FrameSequence.h"
#include "agent/cells/Cell.h"
#include "agent/core/Error.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// Turns the bytes of one application into values, unsets and answers.
///
/// This is the whole receive path above the socket. It checks frames, records, and the data type for each
/// callback id.
///
/// Ownership: the receiver must outlive the stream.
/// Failure: the bytes are not trusted. Do not call receive() again after it has returned an error.
class ApplicationStream
{
public:
    class Receiver
    {
    public:
        virtual ~Receiver() = default;

        /// notify: the application wants a notification about the value.
        virtual void handleValue(const ObjectId& id, const CellValue& value, bool notify) = 0;
        virtual void handleUnset(const ObjectId& tree) = 0;
        virtual void handleAnswer(int number, int errorStatus) = 0;
    };

    ApplicationStream(Receiver& receiver, int maxFrameBytes) : m_receiver(receiver), m_frames(maxFrameBytes)
    {}

    /// Hands all complete frames to the receiver. An error ends the stream.
    Error receive(const QByteArray& bytes);

    /// The number of frames so far.
    quint64 frames() const { return m_frames.count(); }

    /// The memory of an unfinished frame.
    size_t memory() const { return m_frames.memory(); }

    /// True while the rest of a frame is yet to arrive.
    bool isInsideFrame() const { return m_frames.isInsideFrame(); }

private:
    Error handleFrame(const base::Frame& frame);
    Error handleRecord(const base::Frame& frame);
    Error handleInt(const QByteArray& payload, bool notify);
    Error handleString(const QByteArray& payload, bool notify);

    template <typename Response>
    Error handleAnswer(const Response& answer);

    Receiver& m_receiver;
    FrameSequence m_frames;
};

} // namespace agent

#endif
