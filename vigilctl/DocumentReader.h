// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGILCTL_DOCUMENTREADER_H
#define VIGILCTL_DOCUMENTREADER_H

#include <QByteArray>
#include <QObject>
#include <QTimer>

namespace vigilctl {

/// The peer is not trusted: any user may listen on the port of an agent that is away.
struct AnswerLimits
{
    qint64 bytes = qint64{128} * 1024 * 1024; ///< a host with 100 000 metrics has about a third
    int silenceMs = 10'000;
    int wholeMs = 60'000;
};

/// Asks an agent for its document (docs/checks.schema.json), in one of two ways.
///
/// Failure: finished() gives the reason. An answer beyond the limits counts as one.
class DocumentReader : public QObject
{
    Q_OBJECT

public:
    explicit DocumentReader(const AnswerLimits& limits);

    /// finished() follows.
    virtual void read() = 0;

    /// The agent's address, in messages.
    virtual QString address() const = 0;

signals:
    /// problem is empty unless there is no answer.
    void finished(const QByteArray& answer, const QString& problem);

protected:
    /// The question is on its way.
    void begin();

    /// The next bytes of the answer. Ends the reading if they are too many.
    void take(const QByteArray& bytes);

    /// Ends the reading, for a reason or with the bytes taken. Later calls have no effect.
    void finish(const QString& problem = {});

    bool isAnswerEmpty() const { return m_answer.isEmpty(); }

private:
    virtual void disconnectFromAgent() = 0;

    const AnswerLimits m_limits;
    QTimer m_silence;
    QTimer m_whole;
    QByteArray m_answer;
    bool m_isBusy = false;
};

} // namespace vigilctl

#endif
