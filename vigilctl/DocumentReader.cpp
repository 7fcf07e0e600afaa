// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "vigilctl/DocumentReader.h"

#include <utility>

namespace vigilctl {

DocumentReader::DocumentReader(const AnswerLimits& limits) : m_limits(limits)
{
    m_silence.setSingleShot(true);
    m_whole.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] { finish(QStringLiteral("it does not answer")); });
    connect(&m_whole, &QTimer::timeout, this,
            [this] { finish(QStringLiteral("its answer takes longer than %1 ms").arg(m_limits.wholeMs)); });
}

void DocumentReader::begin()
{
    m_isBusy = true;
    m_answer.clear();
    m_silence.start(m_limits.silenceMs);
    m_whole.start(m_limits.wholeMs);
}

void DocumentReader::take(const QByteArray& bytes)
{
    if (!m_isBusy)
        return;
    m_silence.start(m_limits.silenceMs);
    if (m_answer.size() + bytes.size() > m_limits.bytes)
        finish(QStringLiteral("its answer is longer than %1 bytes").arg(m_limits.bytes));
    else
        m_answer += bytes;
}

void DocumentReader::finish(const QString& problem)
{
    if (!std::exchange(m_isBusy, false))
        return;
    m_silence.stop();
    m_whole.stop();
    disconnectFromAgent();
    const QByteArray answer = problem.isEmpty() ? m_answer : QByteArray();
    // Not from the signal of a socket: the slot may ask again.
    QTimer::singleShot(0, this, [this, answer, problem] { emit finished(answer, problem); });
}

} // namespace vigilctl
