// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_APPLICATIONS_APPLICATIONSTREAM_H
#define VIGIL_AGENT_APPLICATIONS_APPLICATIONSTREAM_H

#include <QByteArray>
#include <QString>

#include <string>

#include "agent/applications/FrameAssembler.h"
#include "agent/cells/Cell.h"
#include "agent/core/ObjectId.h"

namespace agent {

/// What an application sends, from bytes to what they mean.
///
/// Purpose: the whole of the receive path that needs no socket. Frames, records and what goes with which
/// callback id are checked here.
///
/// Threads: the agent has one. Ownership: the receiver must outlive the stream.
/// Failure: the bytes are not trusted. receive() says what is wrong with them; nothing may follow then.
class ApplicationStream
{
public:
    class Receiver
    {
    public:
        virtual ~Receiver() = default;

        /// isNotable: the application wishes a notification about the value.
        virtual void handleValue(const ObjectId& id, const CellValue& value, bool isNotable) = 0;
        virtual void handleUnset(const ObjectId& tree) = 0;
        virtual void handleAnswer(int number, int errorStatus) = 0;
    };

    ApplicationStream(Receiver& receiver, int maxFrameBytes) : m_receiver(receiver), m_frames(maxFrameBytes)
    {}

    /// Hands on what is complete. Returns the problem that ends the stream, or an empty text.
    QString receive(const QByteArray& bytes);

    /// The number of frames so far.
    quint64 frames() const { return m_frames.count(); }

    /// True when the rest of a frame is still to come.
    bool isInsideFrame() const { return m_frames.isInsideFrame(); }

private:
    QString recordProblem(const FrameAssembler::Frame& frame);
    void handleRecord(const FrameAssembler::Frame& frame);
    void handleInt(const QByteArray& payload, bool isNotable);
    void handleString(const QByteArray& payload, bool isNotable);

    Receiver& m_receiver;
    FrameAssembler m_frames;
};

} // namespace agent

#endif
